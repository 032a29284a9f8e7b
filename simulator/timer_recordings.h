// Recordings that are set for later: they start and end by the clock. It knows no bus.
#pragma once

#include "outcome.h"
#include "recorder.h"

#include <cstdint>
#include <map>
#include <optional>

namespace simulator {

class TimerRecordings {
public:
    static constexpr std::uint64_t longest = std::uint64_t{366} * 24 * 60 * 60; ///< seconds ahead, and of a recording
    static constexpr std::size_t most = 1000;

    TimerRecordings(Recorder &recorder, Clock clock);

    /// Records a channel in so many seconds, for so many; 0: until it is stopped. Whether that is possible turns out
    /// when it is due. The number counts from 1. Nothing when there are too many, or it is too far ahead or too long.
    std::optional<std::uint32_t> set(std::uint64_t service_id, std::uint64_t in_seconds, std::uint64_t duration);
    /// Forgets one that is to come, and stops one that runs.
    Outcome cancel(std::uint32_t id);

    std::optional<Microseconds> due() const;
    /// Starts what is due.
    void advance();

private:
    struct Planned {
        std::uint32_t id;
        std::uint64_t service_id;
        int duration;
    };

    const RunningRecording *running(int uid) const;
    void start(const Planned &planned);
    void forget_what_is_over();

    Recorder &recorder_;
    Clock clock_;
    std::multimap<Microseconds, Planned>
        planned_;                          ///< by their start; at the same moment, the one set first comes first
    std::map<std::uint32_t, int> started_; ///< the uid of each that runs
    std::uint32_t last_id_ = 0;
};

} // namespace simulator
