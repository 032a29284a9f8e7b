// One playback: where it is in its recording, and how that changes with the time that it is told. It knows
// no clock, no file and no bus.
#pragma once

#include "pvr_events.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>

namespace simulator {

/// A moment or a span. Moments count from any origin; all that meet must share it.
using Microseconds = std::chrono::microseconds;

inline std::int64_t whole_seconds(Microseconds time) { return std::chrono::floor<std::chrono::seconds>(time).count(); }

/// The state of winding forward or back at a type of 1 to 10; nothing for any other type. 1 to 7 double the
/// speed each time, from 2 to 128 times; 8, 9 and 10 are slow motion at a half, a quarter and an eighth.
std::optional<ps_play_state_e> forward_state(int forward_type);
std::optional<ps_play_state_e> rewind_state(int rewind_type);

/// What a playback of 25 frames a second shows for one frame.
constexpr Microseconds frame_length = std::chrono::milliseconds(40);

class Playback {
public:
    /// Plays from start on, which is clamped to the recording.
    Playback(Microseconds length, Microseconds start, Microseconds now);

    ps_play_state_e state() const { return state_; }
    Microseconds length() const { return length_; }
    /// Between 0 and the length.
    Microseconds position(Microseconds now) const;

    /// Goes on from where it is in another state: playing, winding, slow motion or pause.
    void change_to(ps_play_state_e state, Microseconds now);
    /// Goes to a position, which is clamped to the recording; the state stays.
    void move_to(Microseconds position, Microseconds now);
    /// The recording has become longer.
    void extend_to(Microseconds length) { length_ = std::max(length_, length); }
    /// The recording has become shorter at its beginning, from which positions count. One that is gone becomes 0.
    void lose_beginning(Microseconds lost, Microseconds now);
    /// Stands still one frame further on.
    void step(Microseconds now);

    /// When it will reach the end, or the beginning by rewinding; nothing when it stands still.
    std::optional<Microseconds> arrival() const;
    bool runs_backwards() const;

private:
    ps_play_state_e state_ = PLAY_STATE_PLAY;
    Microseconds length_;
    Microseconds from_;  ///< the position at the moment since_
    Microseconds since_; ///< when state or position were last set
};

} // namespace simulator
