// Playback as the service offers it: the handles, and the one decoder that they share. It knows no bus; what
// happens is told to an observer.
#pragma once

#include "handles.h"
#include "outcome.h"
#include "playback.h"
#include "pvr_events.h"
#include "recording.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace simulator {

/// What happened to a playback.
struct PlaybackEvent {
    enum Kind {
        answered,          ///< the command of that name was carried out or refused; result tells which
        will_start,        ///< it is about to start
        will_wind,         ///< it is about to wind, or to play slowly
        will_skip,         ///< it is about to skip
        changed,           ///< it is in another state
        reached_beginning, ///< by rewinding; it goes on playing
        reached_end,
        is_over,    ///< it ended or was stopped
        failed,     ///< its uri cannot be played; result is the error
        became_busy ///< the decoder plays (result 1), or it does so no longer (0)
    };

    Kind kind;
    int handle = 0;
    ps_method_e command = PS_PLAY_START; ///< of answered
    int result = 0;
    ps_play_state_e state = PLAY_STATE_NONE;
    Microseconds position{0};
    std::string uri{}; ///< as it was given

    bool operator==(const PlaybackEvent &) const = default;
};

struct Progress {
    ps_play_state_e state;
    std::int64_t relative_second; ///< from the start of the recording
    std::int64_t absolute_second; ///< that moment of the recording, in seconds since 1970 UTC
};

/// What there is of a file that is still being written.
struct Extent {
    Microseconds length;
    Microseconds given_up{0}; ///< what it had before that, and has no longer
};

class Player {
public:
    using Opener = std::function<Recording(const std::string &uri)>; ///< throws Unplayable
    /// What there is by now of a file that is still being written; nothing for any other.
    using Growth = std::function<std::optional<Extent>(const std::string &path)>;
    using Observer = std::function<void(const PlaybackEvent &)>;

    Player(Handles &handles, Clock clock, Opener opener, Growth growth, Observer observer);

    int get_handle();
    /// Stops its playback first.
    Outcome release(int handle);

    /// Plays from start_second on. A playback that runs, on whatever handle, is stopped once it is clear that the
    /// new one can start.
    Outcome start(int handle, const std::string &uri, int start_second);
    Outcome pause(int handle);
    Outcome resume(int handle);
    Outcome forward(int handle, int forward_type);
    Outcome rewind(int handle, int rewind_type);
    /// skip_type: 0 to skip_second from the start, 1 forward and 2 back by skip_second, 3 to percent of the length.
    Outcome skip(int handle, int skip_type, int skip_second, int percent);
    Outcome step_frame(int handle);
    Outcome stop(int handle);
    Outcome stop_uri(const std::string &uri);
    /// Stops what plays from this file, which goes away.
    void stop_path(const std::string &path);
    /// Stops whatever plays; done as well when nothing does.
    Outcome stop_all();

    bool is_playing() const { return current_.has_value(); }
    /// PLAY_STATE_NONE when nothing plays.
    ps_play_state_e state() const;
    /// The uri as it was given; empty when the handle plays nothing.
    std::string uri(int handle) const;
    bool plays_from(const std::string &path) const { return current_ && current_->recording.path == path; }
    std::optional<Progress> progress(int handle) const;

    /// When something will happen by itself: end or beginning reached. Nothing when nothing will.
    std::optional<Microseconds> due() const;
    /// Lets everything happen that is due.
    void advance();

private:
    struct Current {
        int handle;
        std::string uri;
        Recording recording;
        Playback playback;
        bool is_growing;
        Microseconds given_up; ///< of the file, as far as is known
    };

    /// Runs a command on the playback of a handle, and tells the observer what became of it.
    template <typename Command>
    Outcome command(ps_method_e method, int handle, Command carry_out);
    Outcome check_playing(int handle) const;
    Outcome wind(ps_method_e method, int handle, std::optional<ps_play_state_e> state);
    void follow_growth();
    void end_playback();
    void go_idle();
    void tell(PlaybackEvent::Kind kind);
    void tell_answered(ps_method_e method, int handle, ps_play_state_e state, int result);
    ps_play_state_e state_of(int handle) const;

    Handles &handles_;
    Clock clock_;
    Opener opener_;
    Growth growth_;
    Observer observer_;
    std::optional<Current> current_;
};

} // namespace simulator
