#include "virtual_clock.h"

#include "timer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <glib.h>
#include <utility>

namespace simulator {
namespace {

Microseconds scaled(Microseconds time, double factor)
{
    return Microseconds(static_cast<std::int64_t>(std::ceil(static_cast<double>(time.count()) * factor)));
}

} // namespace

VirtualClock::Real VirtualClock::real_now() { return {monotonic_now(), Microseconds(g_get_real_time())}; }

VirtualClock::VirtualClock(double speed, RealClock real)
    : speed_(speed), real_(std::move(real)), origin_(real_().monotonic), real_origin_(origin_),
      machine_offset_(real_().wall - origin_), now_(origin_), target_(origin_), wall_offset_(machine_offset_)
{
}

VirtualClock VirtualClock::standing_at(Microseconds wall)
{
    static constexpr Microseconds any_moment = std::chrono::hours(1);
    VirtualClock clock(1, [wall] { return Real{any_moment, wall}; });
    clock.stands_still_ = true;
    return clock;
}

Microseconds VirtualClock::target()
{
    // Less is a clock that is being disciplined, and the time between two questions.
    constexpr Microseconds large = std::chrono::seconds(1);
    const Real now = real_();
    const Microseconds change = now.wall - now.monotonic - machine_offset_;
    if (change > large || change < -large) {
        machine_offset_ += change;
        wall_offset_ += change;
    }
    target_ = std::max(now_, origin_ + scaled(now.monotonic - real_origin_, speed_));
    return target_;
}

void VirtualClock::go_to(Microseconds moment) { now_ = std::max(now_, moment); }

void VirtualClock::skip(Microseconds time) { origin_ += time; }

void VirtualClock::forget_lag()
{
    origin_ = target_ = now_;
    real_origin_ = real_().monotonic;
}

Microseconds VirtualClock::real_moment(Microseconds moment) const
{
    return real_origin_ + scaled(moment - origin_, 1 / speed_);
}

Microseconds VirtualClock::stride(Microseconds usual) const
{
    const Microseconds stretched = scaled(usual, std::max(speed_, 1.0));
    return std::max(usual, std::min(std::max(stretched, target_ - now_), longest_stride));
}

} // namespace simulator
