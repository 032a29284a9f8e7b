// The methods that steer playback.
#pragma once

#include "method_room.h"
#include "outcome.h"
#include "pvr_gdbus_generated.h"

#include <string>
#include <tuple>

namespace simulator {

class PlaybackMethods : public MethodRoom {
public:
    PlaybackMethods(OrgVexanTvPvr *object, Television &set);

private:
    Outcome play_pause(int handle);
    Outcome step_frame(int handle);
    Outcome play_resume(int handle);
    Outcome play_forward(int handle, int forward_type);
    Outcome play_rewind(int handle, int rewind_type);
    Outcome play_skip(int handle, int skip_type, int skip_pos, int rate);
    Outcome play_start(int handle, const char *uri, int start_pos);
    Outcome play_stop(int handle);
    Outcome play_stop_by_uri(const char *uri);
    Outcome play_pause_by_service_id(guint64 service_id);
    Outcome play_resume_by_service_id(guint64 service_id);
    Outcome sync_stop_playing(const char *called_app, int set_source);
    std::tuple<int> is_playing_multimedia();
    std::tuple<int> get_play_state_by_service_id(guint64 service_id);
    std::tuple<std::string> get_playback_uri_by_handle(int handle);
};

} // namespace simulator
