// The methods for handles and playback, and the signals that tell of playback.
#pragma once

#include "handles.h"
#include "log.h"
#include "outcome.h"
#include "player.h"
#include "pvr_gdbus_generated.h"
#include "signals.h"
#include "timer.h"

#include <string>
#include <tuple>

namespace simulator {

class PlaybackMethods {
public:
    PlaybackMethods(OrgVexanTvPvr *object, Handles &handles, Signals &signals, const Log &log);

    /// Whether the picture is that of a recording.
    bool is_playing();

    /// A call was answered: logs it, and sends what it caused.
    void answered(const std::string &line);

private:
    std::tuple<int, int> get_handle();
    std::tuple<GVariant *, int> get_handle_for_record();
    Outcome release_handle(int handle);
    Outcome play_pause(int handle);
    Outcome step_frame(int handle);
    Outcome play_resume(int handle);
    Outcome play_forward(int handle, int forward_type);
    Outcome play_rewind(int handle, int rewind_type);
    Outcome play_skip(int handle, int skip_type, int skip_pos, int rate);
    Outcome play_start(int handle, const char *uri, int start_pos);
    Outcome play_stop(int handle);
    Outcome play_stop_by_uri(const char *uri);
    Outcome play_by_service_id(guint64 service_id);
    Outcome stop_playing_and_recording(int handle, int set_source);
    Outcome sync_stop_playing(const char *called_app, int set_source);
    std::tuple<int, gint64, gint64, int> get_progress(int handle);
    std::tuple<int, int> get_pvr_state();
    std::tuple<int> is_playing_multimedia();
    std::tuple<int> is_support_pvr();
    std::tuple<int> get_play_state_by_service_id(guint64 service_id);
    std::tuple<std::string> get_playback_uri_by_handle(int handle);

    /// Lets what is due happen, and sends it.
    void advance();

    Signals &signals_;
    const Log &log_;
    Player player_;
    Timer timer_;
};

} // namespace simulator
