#include "device_news.h"

#include <iterator>
#include <string>

namespace simulator {
namespace {

std::string device(const DeviceEvent &event) { return "device " + std::to_string(event.handle); }

void came(Signals &, const Log &log, const DeviceEvent &event)
{
    log.line(device(event) + " is " + shown(event.name) + " at " + shown(event.mount_path));
}

void left(Signals &signals, const Log &, const DeviceEvent &event)
{
    signals.result(PS_REMOVE_DEV, result_value(event.mount_path), device(event) + ", PS_REMOVE_DEV");
}

void formatted(Signals &signals, const Log &, const DeviceEvent &event)
{
    signals.result(PS_FORMAT, result_value(event.result),
                   device(event) + ", PS_FORMAT " + (event.result == 0 ? "done" : "failed with ") +
                       (event.result == 0 ? "" : std::to_string(event.result)));
}

void measured(Signals &signals, const Log &, const DeviceEvent &event)
{
    signals.result(PS_PERFORMANCE_TEST, result_value(event.result),
                   device(event) + ", PS_PERFORMANCE_TEST " + std::to_string(event.result));
}

} // namespace

void announce_device(Signals &signals, const Log &log, const DeviceEvent &event)
{
    // By kind, in their order.
    constexpr void (*announcements[])(Signals &, const Log &, const DeviceEvent &) = {came, left, formatted, measured};
    static_assert(std::size(announcements) == DeviceEvent::measured + 1);
    announcements[event.kind](signals, log, event);
}

} // namespace simulator
