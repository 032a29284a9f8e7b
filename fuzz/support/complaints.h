// What GLib and the tests' expectations complain of is a finding.
#pragma once

#include <csignal>
#include <cstdlib>
#include <glib.h>

namespace fuzz {

/// Both end the process by SIGTRAP, of which libFuzzer knows nothing: it would keep no input.
inline void make_complaints_findings()
{
    g_log_set_always_fatal(static_cast<GLogLevelFlags>(G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING));
    std::signal(SIGTRAP, [](int) { std::abort(); });
}

} // namespace fuzz
