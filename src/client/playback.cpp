// Handles and playback control.
#include "client/call.h"

using namespace pvr;

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

int svc_pvr_play_start(int handle, const char *uri, int start_pos) noexcept
{
    Call call(ENTRY(" someione[handle:%d][uri:%s][start_pos:%d]\n", handle, uri, start_pos));
    auto answer = call.remote(wire::play_start, handle, uri, start_pos, service_result);
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

int svc_pvr_stop_playing_sync(const char *called_app) noexcept
{
    constexpr int set_source = 1;
    Call call(ENTRY("[called_app:%s]\n", called_app));
    auto answer = call.remote(wire::sync_stop_playing, called_app, set_source, service_result);
    return answer.pass_through_rule();
}
