// What the control interface does with the time: it passes at once, and recordings are set for later.
#include "control.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <tuple>

namespace simulator {
namespace {

constexpr std::uint64_t longest_step = std::uint64_t{31} * 24 * 60 * 60;

Failure wrong_argument(const char *message) { return {"org.freedesktop.DBus.Error.InvalidArgs", message}; }

Failure failed(const char *message) { return {"org.freedesktop.DBus.Error.Failed", message}; }

} // namespace

Control::Done Control::step(guint64 seconds)
{
    if (seconds > longest_step)
        return wrong_argument("more than 31 days");
    service_.set().step(std::chrono::seconds(seconds));
    return {};
}

Control::Answer<guint> Control::schedule_recording(guint64 service_id, guint64 in_seconds, guint64 duration)
{
    if (service_.set().channels.find(service_id) == nullptr)
        return wrong_argument("no such channel");
    if (in_seconds > TimerRecordings::longest || duration > TimerRecordings::longest)
        return wrong_argument("more than 366 days");
    const std::optional<std::uint32_t> id = service_.set().timer_recordings.set(service_id, in_seconds, duration);
    if (!id)
        return failed("there are too many timer recordings already");
    return std::tuple<guint>(*id);
}

Control::Done Control::cancel_recording(guint id)
{
    if (!service_.set().timer_recordings.cancel(id).is_done())
        return wrong_argument("no such timer recording");
    return {};
}

} // namespace simulator
