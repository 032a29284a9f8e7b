// What there is to be of a set, as options and files tell: what it receives, stores and records, and how fast it is.
#pragma once

#include "channels.h"
#include "devices.h"
#include "latencies.h"
#include "recorder.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

struct Equipment {
    static constexpr int most_tuners = 8;
    static constexpr std::int64_t shortest_timeshift = 10; ///< seconds
    static constexpr std::int64_t most_timeshift = 24 * 60 * 60;

    std::vector<Channel> channels = built_in_channels();
    std::map<std::uint64_t, std::string> sources{}; ///< of channels, as open_source() understands them
    std::vector<DeviceDescription> devices{};
    int tuners = Recorder::default_tuners;
    Microseconds longest_timeshift = Recorder::default_timeshift;
    double speed = 1; ///< of the time
    Latencies latencies{};
    /// When the set's time begins, since 1970 UTC, if it is to stand still but for steps.
    std::optional<Microseconds> standing_since{};

    bool operator==(const Equipment &) const = default;
};

} // namespace simulator
