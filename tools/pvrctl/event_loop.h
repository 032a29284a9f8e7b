// The main context, in which the library's events arrive, run until something holds.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>

#include "wait.h"

namespace pvrctl {

/// One per process, made before anything is waited for. While it runs, Ctrl-C and SIGTERM end it.
class EventLoop {
public:
    EventLoop();
    ~EventLoop();
    EventLoop(const EventLoop &) = delete;
    EventLoop &operator=(const EventLoop &) = delete;

    /// Runs until the condition holds, which is looked at first, after each event, and every so often. False when the
    /// time is up before that; without a limit there is no such time. Throws Interrupted.
    bool run_until(const std::function<bool()> &holds, std::optional<int> seconds, std::chrono::milliseconds look);

private:
    EndSignals ends_;
    unsigned end_source_;
};

} // namespace pvrctl
