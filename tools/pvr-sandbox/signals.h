// How the program found signals when it started, and which ones it takes itself.
#pragma once

#include <csignal>

namespace sandbox {

/// The state of all signals at construction. Children get it back: GLib ignores SIGPIPE, and the
/// sandbox blocks what it takes, but the command is to find everything as without the sandbox.
class InheritedSignals {
public:
    InheritedSignals();

    /// The signals that the sandbox takes from a descriptor or by waiting. What was ignored stays ignored.
    sigset_t handled() const;

    /// For a child between fork and exec: takes no lock and no memory.
    void restore() const noexcept;

private:
    sigset_t mask_{};
    sigset_t ignored_{};
};

} // namespace sandbox
