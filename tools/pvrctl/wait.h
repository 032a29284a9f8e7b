// Waiting for something that the service does, and for the signals that end a wait.
#pragma once

#include <chrono>
#include <csignal>

namespace pvrctl {

/// How often the service is asked whether it has come so far.
inline constexpr std::chrono::milliseconds look_interval{200};

/// Waits that long, and lets go of the service's news that have come: nobody else reads them.
void pause(std::chrono::milliseconds time);

/// SIGINT and SIGTERM as something to be waited for, from here on, in place of their ending the program. What the
/// program was started to ignore stays ignored. It has to be made before there are threads, which inherit it.
class StopSignals {
public:
    StopSignals();

    /// As pause(), but returns early when a signal comes: its number, or 0. The next one ends the program again.
    int pause(std::chrono::milliseconds time);

private:
    sigset_t signals_{};
};

/// SIGINT and SIGTERM in a program that runs a main context. They end the program at once until they are deferred;
/// from there on the first one is kept, and the second one ends it. What is ignored stays ignored. One per process.
class EndSignals {
public:
    EndSignals();
    ~EndSignals();
    EndSignals(const EndSignals &) = delete;
    EndSignals &operator=(const EndSignals &) = delete;

    void defer() noexcept;

    /// Readable once a signal was kept.
    int fd() const noexcept { return fd_; }
    /// The signal that was kept, or 0.
    int received() const noexcept;

private:
    int fd_;
};

/// Ends the program as one that a signal has ended, after everything has been said.
struct Interrupted {
    int signal;

    /// As a shell has it.
    int exit_code() const noexcept { return 128 + signal; }
};

} // namespace pvrctl
