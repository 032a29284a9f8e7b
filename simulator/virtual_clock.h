// What time it is for the set: the only source of time of all that it does. Time passes as fast as it is told to, can
// be stepped, and stands still while something happens.
#pragma once

#include "playback.h"

#include <cstdint>
#include <functional>

namespace simulator {

class VirtualClock {
public:
    /// The same moment on the machine's two clocks; the second counts since 1970 UTC.
    struct Real {
        Microseconds monotonic;
        Microseconds wall;
    };
    using RealClock = std::function<Real()>;

    static constexpr double slowest = 0.01;
    static constexpr double fastest = 10'000;
    /// What recurs is done at least as often, so that little is done at a time.
    static constexpr Microseconds longest_stride = std::chrono::seconds(10);

    /// Begins with the real time; from then on an hour lasts an hour divided by the speed.
    explicit VirtualClock(double speed = 1, RealClock real = real_now);

    /// A clock that only skip() takes further, from a moment since 1970 UTC on.
    static VirtualClock standing_at(Microseconds wall);

    bool stands_still() const { return stands_still_; }
    double speed() const { return speed_; }
    /// The moment that the set lives in, which changes by go_to() alone. Moments count as the timers' do at first.
    Microseconds now() const { return now_; }
    /// The same moment since 1970 UTC. When somebody sets the machine's clock, or it has slept, this follows.
    Microseconds wall() const { return now_ + wall_offset_; }
    std::int64_t wall_seconds() const { return whole_seconds(wall()); }

    /// The moment that the set should have reached.
    Microseconds target();
    /// Lets time pass up to a moment; never goes back.
    void go_to(Microseconds moment);
    /// From now on the target is so much later.
    void skip(Microseconds time);
    /// Time goes on from where the set is, though it should have got further.
    void forget_lag();

    /// When a moment comes, on the clock of timers. Of a clock that stands still none does.
    Microseconds real_moment(Microseconds moment) const;
    /// How long something waits that recurs after this time: longer when time passes faster, or is to be caught up.
    Microseconds stride(Microseconds usual) const;

    static Real real_now();

private:
    double speed_;
    bool stands_still_ = false;
    RealClock real_;
    Microseconds origin_;         ///< the moment
    Microseconds real_origin_;    ///< that belongs to this one of the machine
    Microseconds machine_offset_; ///< of its wall clock, as it was last taken over
    Microseconds now_;
    Microseconds target_;
    Microseconds wall_offset_;
};

} // namespace simulator
