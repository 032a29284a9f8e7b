// The channels that the set receives, the one that it is tuned to, and what is on. It knows no bus; its time is told to
// it.
#pragma once

#include "outcome.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace simulator {

enum class ChannelKind { television, radio, analogue };

struct Channel {
    std::uint64_t service_id;
    std::string name;
    int major;
    int minor;
    ChannelKind kind;
    int source;          ///< which reception it belongs to: 1 aerial, 2 cable, 3 satellite
    int bits_per_second; ///< of its stream; 0 when there is none to record
    bool has_signal;
    bool is_locked; ///< against children
    bool is_scrambled;
    std::vector<std::string> titles; ///< of the programmes, which follow one another for ever; none: nothing is told

    bool operator==(const Channel &) const = default;
};

struct Programme {
    std::string title;
    std::uint32_t start; ///< seconds since 1970 UTC
    std::uint32_t end;

    bool operator==(const Programme &) const = default;
};

/// The channels of a set that nobody has set up otherwise.
std::vector<Channel> built_in_channels();

class Channels {
public:
    using WallClock = std::function<std::int64_t()>; ///< seconds since 1970 UTC

    /// Programmes begin with the hour and with the half hour.
    static constexpr std::int64_t programme_length = 1800;

    /// Tuned to the first channel. There must be one.
    Channels(std::vector<Channel> channels, WallClock clock);

    /// Null when there is no such channel.
    const Channel *find(std::uint64_t service_id) const;
    /// What is on; nothing when the channel tells nothing, or the set does not know what time it is.
    std::optional<Programme> programme(const Channel &channel) const;
    /// What of a channel can be seen and heard: 1 for sound and 2 for a picture.
    static int seen_and_heard(const Channel &channel);
    /// Whether all of these channels are known, and none is scrambled.
    bool are_descrambled(std::span<const std::uint64_t> service_ids) const;

    std::uint64_t current() const { return current_; }
    Outcome tune(std::uint64_t service_id);

    bool is_date_set() const { return is_date_set_; }
    void set_date(bool is_set) { is_date_set_ = is_set; }

private:
    std::vector<Channel> channels_;
    WallClock clock_;
    std::uint64_t current_;
    bool is_date_set_ = true;
};

} // namespace simulator
