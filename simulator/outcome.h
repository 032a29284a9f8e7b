// What became of a request, and the clock that models are given.
#pragma once

#include "playback.h"

#include <functional>
#include <string>
#include <utility>

namespace simulator {

/// Tells the time, from any origin.
using Clock = std::function<Microseconds()>;
/// How long something waits that usually recurs after this time.
using Pace = std::function<Microseconds(Microseconds usual)>;
inline Microseconds usual_pace(Microseconds usual) { return usual; }

constexpr int done = 0;
constexpr int refused_result = -2;

/// Done, or refused with a reason for the log.
struct Outcome {
    int result = done;
    std::string reason;

    bool is_done() const { return result == done; }
};

/// What became of a request whose answer has no room for it.
struct Untold {
    Outcome outcome;
};

inline Outcome refused(std::string reason) { return {refused_result, std::move(reason)}; }

} // namespace simulator
