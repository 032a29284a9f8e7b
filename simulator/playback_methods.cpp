#include "playback_methods.h"

#include "method_row.h"
#include "playback_news.h"

#include <optional>

namespace simulator {
namespace {

constexpr int yes = 1;

} // namespace

PlaybackMethods::PlaybackMethods(OrgVexanTvPvr *object, Handles &handles, Signals &signals, const Log &log)
    : signals_(signals), log_(log), player_(handles, monotonic_now, open_recording,
                                            [this](const PlaybackEvent &event) { announce_playback(signals_, event); }),
      timer_([this] { advance(); })
{
    connect(object, this, METHOD(get_handle), &PlaybackMethods::get_handle);
    connect(object, this, METHOD(get_handle_for_record), &PlaybackMethods::get_handle_for_record);
    connect(object, this, METHOD(get_handle_for_playback), &PlaybackMethods::get_handle);
    connect(object, this, METHOD(release_handle), &PlaybackMethods::release_handle);
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
    connect(object, this, METHOD(play_pause_by_service_id), &PlaybackMethods::play_by_service_id);
    connect(object, this, METHOD(play_resume_by_service_id), &PlaybackMethods::play_by_service_id);
    connect(object, this, METHOD(stop_playing_and_recording), &PlaybackMethods::stop_playing_and_recording);
    connect(object, this, METHOD(get_progress), &PlaybackMethods::get_progress);
    connect(object, this, METHOD(get_pvr_state), &PlaybackMethods::get_pvr_state);
    connect(object, this, METHOD(is_playing_multimedia), &PlaybackMethods::is_playing_multimedia);
    connect(object, this, METHOD(is_support_pvr), &PlaybackMethods::is_support_pvr);
    connect(object, this, METHOD(get_play_state_by_service_id), &PlaybackMethods::get_play_state_by_service_id);
    connect(object, this, METHOD(sync_stop_playing), &PlaybackMethods::sync_stop_playing);
    connect(object, this, METHOD(get_playback_uri_by_handle), &PlaybackMethods::get_playback_uri_by_handle);
}

void PlaybackMethods::answered(const std::string &line)
{
    log_.line(line);
    signals_.publish();
    timer_.set(player_.due());
}

bool PlaybackMethods::is_playing()
{
    player_.advance();
    return player_.is_playing();
}

void PlaybackMethods::advance()
{
    player_.advance();
    signals_.publish();
    timer_.set(player_.due());
}

std::tuple<int, int> PlaybackMethods::get_handle() { return {player_.get_handle(), done}; }

std::tuple<GVariant *, int> PlaybackMethods::get_handle_for_record()
{
    return {g_variant_new_array(G_VARIANT_TYPE_INT32, nullptr, 0), 0}; // nothing records
}

Outcome PlaybackMethods::release_handle(int handle) { return player_.release(handle); }

Outcome PlaybackMethods::play_pause(int handle) { return player_.pause(handle); }

Outcome PlaybackMethods::step_frame(int handle) { return player_.step_frame(handle); }

Outcome PlaybackMethods::play_resume(int handle) { return player_.resume(handle); }

Outcome PlaybackMethods::play_forward(int handle, int forward_type) { return player_.forward(handle, forward_type); }

Outcome PlaybackMethods::play_rewind(int handle, int rewind_type) { return player_.rewind(handle, rewind_type); }

Outcome PlaybackMethods::play_skip(int handle, int skip_type, int skip_pos, int rate)
{
    return player_.skip(handle, skip_type, skip_pos, rate);
}

Outcome PlaybackMethods::play_start(int handle, const char *uri, int start_pos)
{
    return player_.start(handle, uri, start_pos);
}

Outcome PlaybackMethods::play_stop(int handle) { return player_.stop(handle); }

Outcome PlaybackMethods::play_stop_by_uri(const char *uri) { return player_.stop_uri(uri); }

Outcome PlaybackMethods::play_by_service_id(guint64) { return refused("a recording's playback belongs to no channel"); }

Outcome PlaybackMethods::stop_playing_and_recording(int handle, int) { return player_.stop(handle); }

Outcome PlaybackMethods::sync_stop_playing(const char *, int) { return player_.stop_all(); }

std::tuple<int, gint64, gint64, int> PlaybackMethods::get_progress(int handle)
{
    player_.advance();
    const std::optional<Progress> progress = player_.progress(handle);
    if (!progress)
        return {0, 0, 0, refused_result};
    return {progress->state, progress->relative_second, progress->absolute_second, done};
}

std::tuple<int, int> PlaybackMethods::get_pvr_state()
{
    player_.advance();
    return {player_.state(), PS_RECORD_STATE_STOP};
}

std::tuple<int> PlaybackMethods::is_playing_multimedia() { return is_playing() ? yes : 0; }

std::tuple<int> PlaybackMethods::is_support_pvr() { return yes; }

std::tuple<int> PlaybackMethods::get_play_state_by_service_id(guint64) { return PLAY_STATE_NONE; }

std::tuple<std::string> PlaybackMethods::get_playback_uri_by_handle(int handle)
{
    player_.advance();
    return player_.uri(handle);
}

} // namespace simulator
