#include "playback.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace simulator {
namespace {

/// How far the position moves in some time; back when negative, not at all when 0.
struct Speed {
    std::int64_t numerator;
    std::int64_t denominator;
};

// clang-format off
constexpr Speed speeds[] = {
    /* PLAY_STATE_NONE       */ {0, 1},
    /* PLAY_STATE_PLAY       */ {1, 1},
    /* PLAY_STATE_PAUSE      */ {0, 1},
    /* PLAY_STATE_FRAME_STEP */ {0, 1},
    /* PLAY_STATE_FF_1 …     */ {2, 1}, {4, 1}, {8, 1}, {16, 1}, {32, 1}, {64, 1}, {128, 1},
    /* PLAY_STATE_FF_1_2 …   */ {1, 2}, {1, 4}, {1, 8},
    /* PLAY_STATE_REW_1 …    */ {-2, 1}, {-4, 1}, {-8, 1}, {-16, 1}, {-32, 1}, {-64, 1}, {-128, 1},
    /* PLAY_STATE_REW_1_2 …  */ {-1, 2}, {-1, 4}, {-1, 8},
    /* PLAY_STATE_STOP       */ {0, 1},
};
// clang-format on
static_assert(std::size(speeds) == PLAY_STATE_MAX);
static_assert(speeds[PLAY_STATE_FF_7].numerator == 128 && speeds[PLAY_STATE_FF_1_8].denominator == 8);
static_assert(speeds[PLAY_STATE_REW_7].numerator == -128 && speeds[PLAY_STATE_REW_1_8].denominator == 8);

constexpr int first_type = 1;
constexpr int last_type = 10;

Speed speed_of(ps_play_state_e state) { return speeds[state]; }

std::optional<ps_play_state_e> winding_state(int type, ps_play_state_e first)
{
    if (type < first_type || type > last_type)
        return std::nullopt;
    return static_cast<ps_play_state_e>(first + type - first_type);
}

} // namespace

std::optional<ps_play_state_e> forward_state(int forward_type) { return winding_state(forward_type, PLAY_STATE_FF_1); }

std::optional<ps_play_state_e> rewind_state(int rewind_type) { return winding_state(rewind_type, PLAY_STATE_REW_1); }

Playback::Playback(Microseconds length, Microseconds start, Microseconds now)
    : length_(length), from_(std::clamp(start, Microseconds::zero(), length)), since_(now)
{
}

Microseconds Playback::position(Microseconds now) const
{
    const Speed speed = speed_of(state_);
    return std::clamp(from_ + (now - since_) * speed.numerator / speed.denominator, Microseconds::zero(), length_);
}

void Playback::change_to(ps_play_state_e state, Microseconds now)
{
    move_to(position(now), now);
    state_ = state;
}

void Playback::move_to(Microseconds position, Microseconds now)
{
    from_ = std::clamp(position, Microseconds::zero(), length_);
    since_ = now;
}

void Playback::lose_beginning(Microseconds lost, Microseconds now)
{
    const Microseconds left = position(now) - lost;
    length_ = std::max(length_ - lost, Microseconds::zero());
    move_to(left, now);
}

void Playback::step(Microseconds now)
{
    change_to(PLAY_STATE_FRAME_STEP, now);
    move_to(from_ + frame_length, now);
}

std::optional<Microseconds> Playback::arrival() const
{
    const Speed speed = speed_of(state_);
    if (speed.numerator == 0)
        return std::nullopt;
    const std::int64_t per_step = speed.numerator < 0 ? -speed.numerator : speed.numerator;
    const Microseconds ahead = speed.numerator < 0 ? from_ : length_ - from_;
    // Rounded up: at the arrival the position is the end and not a hair before it.
    return since_ + Microseconds((ahead.count() * speed.denominator + per_step - 1) / per_step);
}

bool Playback::runs_backwards() const { return speed_of(state_).numerator < 0; }

} // namespace simulator
