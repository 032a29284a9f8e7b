// Something to be done at a moment, in the main context.
#pragma once

#include "playback.h"

#include <functional>
#include <glib.h>
#include <optional>

namespace simulator {

/// The clock of timers: GLib's monotonic time.
Microseconds monotonic_now();

class Timer {
public:
    explicit Timer(std::function<void()> action);
    ~Timer();
    Timer(const Timer &) = delete;
    Timer &operator=(const Timer &) = delete;

    /// Runs the action once at this moment, at once when it has passed; never when there is none. What was set
    /// before no longer holds. The action may set the timer anew, and may not destroy it.
    void set(std::optional<Microseconds> moment);

private:
    std::function<void()> action_;
    GSource *source_;
};

} // namespace simulator
