// Handles and playback control.
#include "client/call.h"

#include <cinttypes>

using namespace pvr;

// ---- handles

int svc_pvr_get_handle(int *handle) noexcept
{
    Call call(ENTRY("\n"));
    int issued = 0;
    auto answer = call.remote(wire::get_handle, &issued, service_result);
    if (answer) {
        write_out(handle, issued);
        INFO(" pvr_get_handle finished with handle: [ %d ]\n", issued);
    }
    return answer.transport_rule();
}

int svc_pvr_get_handle_for_playback(int *handle) noexcept
{
    Call call(ENTRY("\n"));
    int issued = 0;
    auto answer = call.remote(wire::get_handle_for_playback, &issued, service_result);
    if (answer) {
        write_out(handle, issued);
        INFO(" svc_pvr_get_handle_for_playback finished with handle: [ %d ]\n", issued);
    }
    return answer.transport_rule();
}

int svc_pvr_get_handle_for_record(int *handle_list, int length, int *num_of_list) noexcept
{
    Call call(ENTRY("[length:%d]\n", length));
    OwnedVariant list;
    int count = 0;
    auto answer = call.remote(wire::get_handle_for_record, &list, &count);
    if (answer) {
        write_out(num_of_list, count);
        DETAIL("num_of_list : %d \n", count);
        store_list(Here(), list, count, handle_list, length);
    }
    return answer.transport_rule();
}

int svc_pvr_get_handle_for_sportsmode(int first, int second, int *handle) noexcept
{
    // deliberately no call, no support check and no output: sports mode issues no handles any more
    ENTRY("[first:%d][second:%d]\n", first, second);
    INFO(" pvr_get_handle finished with handle: [ %d ]\n", handle != nullptr ? *handle : 0);
    return PS_SUCCESS;
}

int svc_pvr_release_handle(int handle) noexcept
{
    Call call(ENTRY("[handle:%d]\n", handle));
    auto answer = call.remote(wire::release_handle, handle, service_result);
    return answer.transport_rule();
}

int svc_pvr_get_playback_uri_by_handle(int handle, char *uri) noexcept
{
    Call call(ENTRY("[handle:%d]\n", handle));
    OwnedText text;
    auto answer = call.remote(wire::get_playback_uri_by_handle, handle, &text);
    if (answer) {
        copy_text(uri, text);
        INFO(" Done\n");
    }
    return answer.transport_rule();
}

// ---- playback by handle. Deliberately "someione": the entry lines have read so ever since.

int svc_pvr_play_start(int handle, const char *uri, int start_pos) noexcept
{
    Call call(ENTRY(" someione[handle:%d][uri:%s][start_pos:%d]\n", handle, uri, start_pos));
    auto answer = call.remote(wire::play_start, handle, uri, start_pos, service_result);
    return answer.transport_rule();
}

int svc_pvr_play_stop(int handle) noexcept
{
    Call call(ENTRY(" someione[handle:%d]\n", handle));
    auto answer = call.remote(wire::play_stop, handle, service_result);
    return answer.transport_rule();
}

int svc_pvr_play_pause(int handle) noexcept
{
    Call call(ENTRY(" someione[handle:%d]\n", handle));
    auto answer = call.remote(wire::play_pause, handle, service_result);
    return answer.transport_rule();
}

int svc_pvr_play_resume(int handle) noexcept
{
    Call call(ENTRY(" someione[handle:%d]\n", handle));
    auto answer = call.remote(wire::play_resume, handle, service_result);
    return answer.transport_rule();
}

int svc_pvr_play_forward(int handle, int forward_type) noexcept
{
    Call call(ENTRY(" someione[handle:%d][forward_type:%d]\n", handle, forward_type));
    auto answer = call.remote(wire::play_forward, handle, forward_type, service_result);
    return answer.transport_rule();
}

int svc_pvr_play_rewind(int handle, int rewind_type) noexcept
{
    Call call(ENTRY(" someione[handle:%d][rewind_type:%d]\n", handle, rewind_type));
    auto answer = call.remote(wire::play_rewind, handle, rewind_type, service_result);
    return answer.transport_rule();
}

int svc_pvr_play_skip(int handle, int skip_type, int skip_pos, int rate) noexcept
{
    Call call(ENTRY(" someione[handle:%d][skip_type:%d][skip_pos:%d][rate:%d]\n", handle, skip_type, skip_pos, rate));
    auto answer = call.remote(wire::play_skip, handle, skip_type, skip_pos, rate, service_result);
    return answer.transport_rule();
}

int svc_pvr_step_frame(int handle) noexcept
{
    Call call(ENTRY(" someione[handle:%d]\n", handle));
    auto answer = call.remote(wire::step_frame, handle, service_result);
    return answer.transport_rule();
}

int svc_pvr_play_stop_to_dtv(int handle) noexcept
{
    Call call(ENTRY(" someione[handle:%d]\n", handle));
    auto answer = call.remote(wire::play_stop_to_dtv, handle, service_result);
    return answer.transport_rule();
}

// ---- playback by channel, by uri, and of whatever plays

int svc_pvr_play_pause_by_service_id(std::uint64_t service_id) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    auto answer = call.remote(wire::play_pause_by_service_id, service_id, service_result);
    return answer.transport_rule();
}

int svc_pvr_play_resume_by_service_id(std::uint64_t service_id) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    auto answer = call.remote(wire::play_resume_by_service_id, service_id, service_result);
    return answer.transport_rule();
}

int svc_pvr_play_stop_by_uri(const char *uri) noexcept
{
    Call call(ENTRY("[uri:%s]\n", uri));
    auto answer = call.remote(wire::play_stop_by_uri, uri, service_result);
    if (answer)
        INFO(" Method: svc_pvr_play_stop_by_uri call finish.\n");
    return answer.transport_rule();
}

int svc_pvr_play_stop_all() noexcept
{
    ENTRY("\n"); // deliberately no call and no support check: nothing is stopped
    return PS_SUCCESS;
}

int svc_pvr_stop_playing_sync(const char *called_app) noexcept
{
    constexpr int set_source = 1;
    Call call(ENTRY("[called_app:%s]\n", called_app));
    auto answer = call.remote(wire::sync_stop_playing, called_app, set_source, service_result);
    return answer.pass_through_rule();
}

int svc_pvr_stop_playing_sync_ex(const char *called_app, int set_source) noexcept
{
    Call call(ENTRY("[called_app:%s][set_source:%d]\n", called_app, set_source));
    auto answer = call.remote(wire::sync_stop_playing, called_app, set_source, service_result);
    return answer.pass_through_rule();
}

int svc_pvr_stop_playing_and_recording(int handle, int set_source) noexcept
{
    Call call(ENTRY("[handle:%d][set_source:%d]\n", handle, set_source));
    auto answer = call.remote(wire::stop_playing_and_recording, handle, set_source, service_result);
    return answer.transport_rule();
}
