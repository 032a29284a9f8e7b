// The calls that the library answers by itself, out of what it has.
#include "faults/scenario.h"
#include "pvr_service_api.h"

#pragma GCC diagnostic ignored "-Wdeprecated-declarations" // retired calls are called all the same

namespace faults {

const std::vector<QuietCall> &quiet_calls()
{
    static int out = 0;
    static autohighlight_cb callback = nullptr;
    // clang-format off
    static const std::vector<QuietCall> calls{
        {"GetDtvType", [] { GetDtvType(); }},
        {"GetTVStandard", [] { GetTVStandard(); }},
        {"IsFileRecordedLocal", [] { IsFileRecordedLocal("a.srf", &out); }},
        {"IsFileRecordedLocalVexan", [] { IsFileRecordedLocalVexan("a.srf", &out); }},
        {"IsSupportCI", [] { IsSupportCI(); }},
        {"get_size_of_device_info", [] { get_size_of_device_info(); }},
        {"get_size_of_expired_content_section", [] { get_size_of_expired_content_section(); }},
        {"get_size_of_pvr_file_info", [] { get_size_of_pvr_file_info(); }},
        {"get_size_of_pvr_result_third", [] { get_size_of_pvr_result_third(); }},
        {"get_size_of_pvr_service_result", [] { get_size_of_pvr_service_result(); }},
        {"get_size_of_pvr_service_signal", [] { get_size_of_pvr_service_signal(); }},
        {"svc_pvr_enter_highlight_player", [] { svc_pvr_enter_highlight_player(); }},
        {"svc_pvr_get_autohighlight_cb", [] { svc_pvr_get_autohighlight_cb(&callback); }},
        {"svc_pvr_get_bookmark_list", [] { svc_pvr_get_bookmark_list(); }},
        {"svc_pvr_get_handle_for_sportsmode", [] { svc_pvr_get_handle_for_sportsmode(1, 2, &out); }},
        {"svc_pvr_get_highlight_player_flag", [] { svc_pvr_get_highlight_player_flag(&out); }},
        {"svc_pvr_get_last_bookmark", [] { svc_pvr_get_last_bookmark("a.srf"); }},
        {"svc_pvr_get_mls_service_id_by_screen_id", [] { svc_pvr_get_mls_service_id_by_screen_id(1); }},
        {"svc_pvr_get_rec_default_dev_index", [] { svc_pvr_get_rec_default_dev_index(&out); }},
        {"svc_pvr_get_rec_device_key_by_index", [] { svc_pvr_get_rec_device_key_by_index(&out); }},
        {"svc_pvr_get_recording_channel", [] { svc_pvr_get_recording_channel(&out); }},
        {"svc_pvr_get_recording_file_info", [] { svc_pvr_get_recording_file_info(&out); }},
        {"svc_pvr_get_recording_time", [] { svc_pvr_get_recording_time(&out); }},
        {"svc_pvr_get_sports_type", [] { svc_pvr_get_sports_type(); }},
        {"svc_pvr_is_auto_highlight", [] { svc_pvr_is_auto_highlight(); }},
        {"svc_pvr_is_available_device", [] { svc_pvr_is_available_device(); }},
        {"svc_pvr_is_file_recorded_local", [] { svc_pvr_is_file_recorded_local("a.srf", &out); }},
        {"svc_pvr_is_highlight_player_available", [] { svc_pvr_is_highlight_player_available(); }},
        {"svc_pvr_is_notify_game", [] { svc_pvr_is_notify_game(); }},
        {"svc_pvr_is_pvr_operating", [] { svc_pvr_is_pvr_operating(&out); }},
        {"svc_pvr_is_recording_available", [] { svc_pvr_is_recording_available(&out); }},
        {"svc_pvr_is_recording_pause", [] { svc_pvr_is_recording_pause(&out); }},
        {"svc_pvr_is_sports_mode", [] { svc_pvr_is_sports_mode(); }},
        {"svc_pvr_notify_enter_and_exist_highlight_player", [] { svc_pvr_notify_enter_and_exist_highlight_player(1); }},
        {"svc_pvr_play_stop_all", [] { svc_pvr_play_stop_all(); }},
        {"svc_pvr_record_pause", [] { svc_pvr_record_pause(1); }},
        {"svc_pvr_record_resume", [] { svc_pvr_record_resume(1); }},
        {"svc_pvr_remove_recording_info", [] { svc_pvr_remove_recording_info(&out); }},
        {"svc_pvr_send_thumbnail_request", [] { svc_pvr_send_thumbnail_request(); }},
        {"svc_pvr_set_bookmark", [] { svc_pvr_set_bookmark("a.srf"); }},
        {"svc_pvr_set_highlight_player_flag", [] { svc_pvr_set_highlight_player_flag(1); }},
    };
    // clang-format on
    return calls;
}

} // namespace faults
