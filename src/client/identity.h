// Who the calling process is: its pid and the name of its executable, printed in most log lines.
#pragma once

#include <atomic>

namespace pvr {

struct Identity {
    int g_thread_id;           ///< pid of the process, 0 before it was first captured
    char g_thread_name[261];   ///< base name of its executable, empty before it was first captured
    const Identity *inherited; ///< what a forked child found captured by its parent, else null
};

/// What was captured last; never null, and what it points to never changes or ends.
extern std::atomic<const Identity *> captured_identity;

/// The identity as captured so far. Every log line asks, so it may cost no more than a load.
inline const Identity &identity() noexcept { return *captured_identity.load(std::memory_order_acquire); }

/// Captures the identity once per process (and once more in a forked child). Safe from any thread.
void _get_pid_name() noexcept;

} // namespace pvr
