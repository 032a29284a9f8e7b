// The Recording service: its interface on the bus, and the rooms that answer.
#pragma once

#include "bus.h"
#include "channel_methods.h"
#include "device_methods.h"
#include "handle_methods.h"
#include "log.h"
#include "playback_methods.h"
#include "recording_file_methods.h"
#include "recording_methods.h"
#include "recording_query_methods.h"
#include "skeleton.h"
#include "television.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace simulator {

class Service {
public:
    /// On no bus yet. on_bus_lost is called when the bus ends the service's connection.
    Service(const Log &log, Equipment equipment, std::function<void()> on_bus_lost);

    /// Comes to the bus under its name; does nothing when it is there. Throws std::runtime_error.
    void appear();
    /// Leaves the bus: calls under way are never answered. What plays goes on.
    void vanish();
    /// Ends what records and plays, and tells of it while there is somebody to tell. It may be done once.
    void stop();
    bool is_present() const { return bus_.has_value(); }

    RecordedCalls &calls() { return skeleton_.calls(); }
    Faults &faults() { return skeleton_.faults(); }
    Television &set() { return set_; }
    /// Has somebody told of each call once it is over, and of its method.
    void watch(std::function<void(const std::string &method)> watcher) { skeleton_.watch(std::move(watcher)); }

    /// Broadcasts any signal of the service's interface; the body is a tuple, taken over when it is
    /// floating. False, with the error set, when that
    /// failed. Must be present.
    bool emit(const char *signal, GVariant *body, GError **error);

private:
    std::function<void()> on_bus_lost_;
    Skeleton skeleton_;
    Television set_;
    HandleMethods handles_;
    PlaybackMethods playback_;
    RecordingMethods recordings_;
    RecordingQueryMethods recording_queries_;
    RecordingFileMethods recording_files_;
    ChannelMethods channels_;
    DeviceMethods devices_;
    std::optional<Bus> bus_;
};

} // namespace simulator
