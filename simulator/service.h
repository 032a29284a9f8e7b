// The Recording service: its interface on the bus, and the rooms that answer.
#pragma once

#include "bus.h"
#include "channel_methods.h"
#include "device_methods.h"
#include "devices.h"
#include "handles.h"
#include "log.h"
#include "playback_methods.h"
#include "signals.h"
#include "skeleton.h"

#include <functional>
#include <optional>
#include <vector>

namespace simulator {

class Service {
public:
    /// On no bus yet. on_bus_lost is called when the bus ends the service's connection.
    Service(const Log &log, std::vector<DeviceDescription> devices, std::function<void()> on_bus_lost);

    /// Comes to the bus under its name; does nothing when it is there. Throws std::runtime_error.
    void appear();
    /// Leaves the bus: calls under way are never answered. What plays goes on.
    void vanish();
    bool is_present() const { return bus_.has_value(); }

    RecordedCalls &calls() { return skeleton_.calls(); }
    Faults &faults() { return skeleton_.faults(); }
    ChannelMethods &channels() { return channels_; }

    /// Broadcasts any signal of the service's interface; the body is a tuple, taken over when it is
    /// floating. False, with the error set, when that
    /// failed. Must be present.
    bool emit(const char *signal, GVariant *body, GError **error);

private:
    std::function<void()> on_bus_lost_;
    Skeleton skeleton_;
    Signals signals_;
    Handles handles_;
    PlaybackMethods playback_;
    ChannelMethods channels_;
    DeviceMethods devices_;
    std::optional<Bus> bus_;
};

} // namespace simulator
