#include "playback_methods.h"

#include "method_row.h"

namespace simulator {
PlaybackMethods::PlaybackMethods(OrgVexanTvPvr *object, Television &set) : MethodRoom(set)
{
    connect(object, this, METHOD(play_pause), &PlaybackMethods::play_pause);
    connect(object, this, METHOD(step_frame), &PlaybackMethods::step_frame);
    connect(object, this, METHOD(play_resume), &PlaybackMethods::play_resume);
    connect(object, this, METHOD(play_forward), &PlaybackMethods::play_forward);
    connect(object, this, METHOD(play_rewind), &PlaybackMethods::play_rewind);
    connect(object, this, METHOD(play_skip), &PlaybackMethods::play_skip);
    connect(object, this, METHOD(play_start), &PlaybackMethods::play_start);
    connect(object, this, METHOD(play_stop), &PlaybackMethods::play_stop);
    connect(object, this, METHOD(play_stop_to_dtv), &PlaybackMethods::play_stop);
    connect(object, this, METHOD(play_stop_by_uri), &PlaybackMethods::play_stop_by_uri);
    connect(object, this, METHOD(play_pause_by_service_id), &PlaybackMethods::play_pause_by_service_id);
    connect(object, this, METHOD(play_resume_by_service_id), &PlaybackMethods::play_resume_by_service_id);
    connect(object, this, METHOD(is_playing_multimedia), &PlaybackMethods::is_playing_multimedia);
    connect(object, this, METHOD(get_play_state_by_service_id), &PlaybackMethods::get_play_state_by_service_id);
    connect(object, this, METHOD(sync_stop_playing), &PlaybackMethods::sync_stop_playing);
    connect(object, this, METHOD(get_playback_uri_by_handle), &PlaybackMethods::get_playback_uri_by_handle);
}

Outcome PlaybackMethods::play_pause(int handle) { return set_.player.pause(handle); }

Outcome PlaybackMethods::step_frame(int handle) { return set_.player.step_frame(handle); }

Outcome PlaybackMethods::play_resume(int handle) { return set_.player.resume(handle); }

Outcome PlaybackMethods::play_forward(int handle, int forward_type)
{
    return set_.player.forward(handle, forward_type);
}

Outcome PlaybackMethods::play_rewind(int handle, int rewind_type) { return set_.player.rewind(handle, rewind_type); }

Outcome PlaybackMethods::play_skip(int handle, int skip_type, int skip_pos, int rate)
{
    return set_.player.skip(handle, skip_type, skip_pos, rate);
}

Outcome PlaybackMethods::play_start(int handle, const char *uri, int start_pos)
{
    return set_.player.start(handle, uri, start_pos);
}

Outcome PlaybackMethods::play_stop(int handle) { return set_.player.stop(handle); }

Outcome PlaybackMethods::play_stop_by_uri(const char *uri) { return set_.player.stop_uri(uri); }

Outcome PlaybackMethods::play_pause_by_service_id(guint64 service_id)
{
    const RunningRecording *shift = set_.recorder.timeshift_of(service_id);
    if (shift == nullptr)
        return refused("this channel is not timeshifted");
    const int handle = shift->handle;
    // What is watched until now is the broadcast itself, which is where the timeshift ends.
    if (set_.player.uri(handle).empty())
        if (Outcome outcome = set_.player.start(handle, shift->file.path(), set_.recorder.seconds(*shift));
            !outcome.is_done())
            return outcome;
    Outcome outcome = set_.player.pause(handle);
    if (outcome.is_done())
        set_.recorder.set_timeshift_type(handle, PS_RECORD_TYPE_TIMESHIFT_PAUSE);
    return outcome;
}

Outcome PlaybackMethods::play_resume_by_service_id(guint64 service_id)
{
    const RunningRecording *shift = set_.recorder.timeshift_of(service_id);
    if (shift == nullptr)
        return refused("this channel is not timeshifted");
    const int handle = shift->handle;
    Outcome outcome = set_.player.resume(handle);
    if (outcome.is_done())
        set_.recorder.set_timeshift_type(handle, PS_RECORD_TYPE_TIMESHIFT_PLAY);
    return outcome;
}

Outcome PlaybackMethods::sync_stop_playing(const char *, int) { return set_.player.stop_all(); }

std::tuple<int> PlaybackMethods::is_playing_multimedia() { return set_.player.is_playing() ? 1 : 0; }

std::tuple<int> PlaybackMethods::get_play_state_by_service_id(guint64 service_id)
{
    const RunningRecording *shift = set_.recorder.timeshift_of(service_id);
    const bool is_watched = shift != nullptr && !set_.player.uri(shift->handle).empty();
    return is_watched ? set_.player.state() : PLAY_STATE_NONE;
}

std::tuple<std::string> PlaybackMethods::get_playback_uri_by_handle(int handle) { return set_.player.uri(handle); }

} // namespace simulator
