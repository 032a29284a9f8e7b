#include "player.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace simulator {
namespace {

/// Where a skip leads from a position of a recording.
struct Skip {
    Microseconds (*target)(Microseconds position, Microseconds length, Microseconds distance, int percent);
};

// By skip_type.
constexpr Skip skips[] = {
    {[](Microseconds, Microseconds, Microseconds distance, int) { return distance; }},
    {[](Microseconds position, Microseconds, Microseconds distance, int) { return position + distance; }},
    {[](Microseconds position, Microseconds, Microseconds distance, int) { return position - distance; }},
    {[](Microseconds, Microseconds length, Microseconds, int percent) {
        return length * std::clamp(percent, 0, 100) / 100;
    }},
};

} // namespace

Player::Player(Handles &handles, Clock clock, Opener opener, Growth growth, Observer observer)
    : handles_(handles), clock_(std::move(clock)), opener_(std::move(opener)), growth_(std::move(growth)),
      observer_(std::move(observer))
{
}

int Player::get_handle() { return handles_.issue(); }

Outcome Player::release(int handle)
{
    advance();
    if (!handles_.is_issued(handle))
        return refused("no such handle");
    if (current_ && current_->handle == handle)
        go_idle();
    handles_.release(handle);
    return {};
}

Outcome Player::start(int handle, const std::string &uri, int start_second)
{
    advance();
    Outcome outcome;
    if (!handles_.is_issued(handle))
        outcome = refused("no such handle");
    else if (start_second < 0)
        outcome = refused("a start before the beginning");
    if (!outcome.is_done()) {
        tell_answered(PS_PLAY_START, handle, state_of(handle), outcome.result);
        return outcome;
    }

    std::optional<Recording> recording;
    try {
        recording = opener_(uri);
    } catch (const Unplayable &reason) {
        tell_answered(PS_PLAY_START, handle, state_of(handle), reason.code());
        observer_({.kind = PlaybackEvent::failed,
                   .handle = handle,
                   .result = reason.code(),
                   .state = state_of(handle),
                   .uri = uri});
        return refused(reason.what());
    }

    const bool was_playing = is_playing();
    if (was_playing)
        end_playback();
    const Microseconds now = clock_();
    const Playback playback(recording->length, std::chrono::seconds(start_second), now);
    observer_({.kind = PlaybackEvent::will_start, .handle = handle, .position = playback.position(now), .uri = uri});
    const std::optional<Extent> extent = growth_(recording->path);
    current_ = {
        handle, uri, std::move(*recording), playback, extent.has_value(), extent ? extent->given_up : Microseconds(0)};
    if (!was_playing)
        observer_({.kind = PlaybackEvent::became_busy, .result = 1});
    tell_answered(PS_PLAY_START, handle, state(), 0);
    tell(PlaybackEvent::changed);
    return {};
}

template <typename Command>
Outcome Player::command(ps_method_e method, int handle, Command carry_out)
{
    advance();
    Outcome outcome = check_playing(handle);
    const ps_play_state_e before = state_of(handle);
    if (outcome.is_done())
        outcome = carry_out(*current_, clock_());
    tell_answered(method, handle, state_of(handle), outcome.result);
    if (state_of(handle) != before)
        tell(PlaybackEvent::changed);
    return outcome;
}

Outcome Player::check_playing(int handle) const
{
    if (!handles_.is_issued(handle))
        return refused("no such handle");
    return current_ && current_->handle == handle ? Outcome() : refused("nothing plays on this handle");
}

Outcome Player::pause(int handle)
{
    return command(PS_PLAY_PAUSE, handle, [](Current &current, Microseconds now) {
        current.playback.change_to(PLAY_STATE_PAUSE, now);
        return Outcome();
    });
}

Outcome Player::resume(int handle)
{
    return command(PS_PLAY_RESUME, handle, [](Current &current, Microseconds now) {
        current.playback.change_to(PLAY_STATE_PLAY, now);
        return Outcome();
    });
}

Outcome Player::forward(int handle, int forward_type)
{
    return wind(PS_PLAY_FORWARD, handle, forward_state(forward_type));
}

Outcome Player::rewind(int handle, int rewind_type) { return wind(PS_PLAY_REWIND, handle, rewind_state(rewind_type)); }

Outcome Player::wind(ps_method_e method, int handle, std::optional<ps_play_state_e> state)
{
    return command(method, handle, [&](Current &current, Microseconds now) {
        if (!state)
            return refused("no such speed");
        tell(PlaybackEvent::will_wind);
        current.playback.change_to(*state, now);
        return Outcome();
    });
}

Outcome Player::skip(int handle, int skip_type, int skip_second, int percent)
{
    return command(PS_PLAY_SKIP, handle, [&](Current &current, Microseconds now) {
        if (skip_type < 0 || skip_type >= static_cast<int>(std::size(skips)))
            return refused("no such kind of skip");
        tell(PlaybackEvent::will_skip);
        current.playback.move_to(skips[skip_type].target(current.playback.position(now), current.playback.length(),
                                                         std::chrono::seconds(skip_second), percent),
                                 now);
        return Outcome();
    });
}

Outcome Player::step_frame(int handle)
{
    return command(PS_STEP_FRAME, handle, [](Current &current, Microseconds now) {
        current.playback.step(now);
        return Outcome();
    });
}

Outcome Player::stop(int handle)
{
    advance();
    Outcome outcome = check_playing(handle);
    tell_answered(PS_PLAY_STOP, handle, outcome.is_done() ? PLAY_STATE_STOP : PLAY_STATE_NONE, outcome.result);
    if (outcome.is_done())
        go_idle();
    return outcome;
}

Outcome Player::stop_uri(const std::string &uri)
{
    advance();
    const bool is_named = current_ && (current_->uri == uri || local_path(uri) == current_->recording.path);
    return is_named ? stop(current_->handle) : refused("it does not play");
}

void Player::stop_path(const std::string &path)
{
    if (plays_from(path))
        stop(current_->handle);
}

Outcome Player::stop_all()
{
    advance();
    return current_ ? stop(current_->handle) : Outcome();
}

ps_play_state_e Player::state() const { return current_ ? current_->playback.state() : PLAY_STATE_NONE; }

ps_play_state_e Player::state_of(int handle) const
{
    return current_ && current_->handle == handle ? state() : PLAY_STATE_NONE;
}

std::string Player::uri(int handle) const
{
    return current_ && current_->handle == handle ? current_->uri : std::string();
}

std::optional<Progress> Player::progress(int handle) const
{
    if (!current_ || current_->handle != handle)
        return std::nullopt;
    const Microseconds position = current_->playback.position(clock_());
    const Microseconds began = current_->recording.ended - current_->recording.length;
    return Progress{state(), whole_seconds(position), whole_seconds(began + position)};
}

std::optional<Microseconds> Player::due() const
{
    // What is played as it is written has no end to arrive at, except by winding.
    constexpr auto winds_forward = [](ps_play_state_e state) {
        return state >= PLAY_STATE_FF_1 && state <= PLAY_STATE_FF_7;
    };
    if (!current_ || (current_->is_growing && !current_->playback.runs_backwards() && !winds_forward(state())))
        return std::nullopt;
    return current_->playback.arrival();
}

void Player::follow_growth()
{
    if (!current_)
        return;
    const std::optional<Extent> extent = growth_(current_->recording.path);
    current_->is_growing = extent.has_value();
    if (!extent)
        return;
    const Microseconds lost = extent->given_up - std::exchange(current_->given_up, extent->given_up);
    Recording &recording = current_->recording;
    recording.ended += extent->length + lost - recording.length;
    recording.length = extent->length;
    current_->playback.extend_to(extent->length + lost);
    if (lost != Microseconds::zero())
        current_->playback.lose_beginning(lost, clock_());
}

void Player::advance()
{
    follow_growth();
    for (auto moment = due(); moment && *moment <= clock_(); moment = due()) {
        if (current_->playback.runs_backwards()) {
            // From the very moment of the arrival on, however late this is noticed.
            current_->playback.change_to(PLAY_STATE_PLAY, *moment);
            tell(PlaybackEvent::reached_beginning);
            tell(PlaybackEvent::changed);
        } else if (current_->is_growing) {
            current_->playback.change_to(PLAY_STATE_PLAY, clock_());
            tell(PlaybackEvent::changed);
        } else {
            tell(PlaybackEvent::reached_end);
            go_idle();
        }
    }
}

void Player::end_playback()
{
    current_->playback.change_to(PLAY_STATE_STOP, clock_());
    tell(PlaybackEvent::changed);
    tell(PlaybackEvent::is_over);
    current_.reset();
}

void Player::go_idle()
{
    end_playback();
    observer_({.kind = PlaybackEvent::became_busy});
}

void Player::tell(PlaybackEvent::Kind kind)
{
    observer_({.kind = kind,
               .handle = current_->handle,
               .state = state(),
               .position = current_->playback.position(clock_()),
               .uri = current_->uri});
}

void Player::tell_answered(ps_method_e method, int handle, ps_play_state_e state, int result)
{
    const bool is_current = current_ && current_->handle == handle;
    observer_({.kind = PlaybackEvent::answered,
               .handle = handle,
               .command = method,
               .result = result,
               .state = state,
               .position = is_current ? current_->playback.position(clock_()) : Microseconds(0),
               .uri = is_current ? current_->uri : std::string()});
}

} // namespace simulator
