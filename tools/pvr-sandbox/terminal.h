// The terminal that the sandbox was started from, if there is one.
#pragma once

#include "fd.h"

#include <sys/types.h>
#include <termios.h>

namespace sandbox {

/// Expects SIGTTOU to be blocked: the keeper is no foreground process.
class Terminal {
public:
    /// Remembers the terminal's modes. The group is the one of the process that the user started.
    explicit Terminal(pid_t group);

    /// Gives a group the foreground, if the sandbox's own has it.
    void hand_to(pid_t group) const;

    /// Puts back the modes, and the sandbox's group into the foreground, after a command that was killed.
    /// Leaves the terminal alone when it is somebody else's by now.
    void restore() const;

private:
    Fd fd_;
    pid_t group_;
    termios modes_{};
    bool has_modes_ = false;
};

} // namespace sandbox
