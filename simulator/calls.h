// The method calls that arrived, for whoever wants to know what an application asked.
#pragma once

#include "client/owned.h"
#include "playback.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <utility>

namespace simulator {

struct RecordedCall {
    std::uint64_t number;   ///< counts from 1 and never starts again
    Microseconds monotonic; ///< when it arrived
    Microseconds wall;      ///< the same moment, since 1970 UTC
    std::string sender;     ///< unique bus name
    std::string method;
    pvr::OwnedVariant arguments; ///< a tuple
};

/// Keeps the newest calls, bounded by their number and by the size of their arguments.
class RecordedCalls {
public:
    static constexpr std::size_t most_calls = 10'000;
    /// The whole list has to fit into one message of the bus.
    static constexpr std::size_t most_bytes = std::size_t{32} << 20;

    /// Has somebody told of each call from here on.
    void watch(std::function<void(const RecordedCall &)> watcher) { watcher_ = std::move(watcher); }

    void record(std::string sender, std::string method, GVariant *arguments);
    void clear();

    const std::deque<RecordedCall> &list() const { return calls_; }

private:
    void drop_oldest();

    std::function<void(const RecordedCall &)> watcher_;
    std::deque<RecordedCall> calls_;
    std::uint64_t last_number_ = 0;
    std::size_t bytes_ = 0;
};

} // namespace simulator
