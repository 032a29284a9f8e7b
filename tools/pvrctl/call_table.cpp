// The rows of pvrctl call: every function that the library exports, by the headers that declare them.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <pvr_service_api.h>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "call_row.h"

namespace pvrctl {
namespace {

constexpr std::size_t most_listed = 65536;

/// As many as the library has stored, never more than there is room for. A count that it left alone is below 0.
template <typename T>
void keep_stored(std::vector<T> &list, int count)
{
    list.resize(std::min(list.size(), static_cast<std::size_t>(std::max(count, 0))));
}

template <auto function, typename T>
int list_with_room(Listed<T> list, int length, int *count)
{
    if (length > static_cast<int>(most_listed))
        throw Failure(ExitCode::usage, "length: " + std::to_string(length) + " is more than pvrctl has room for, " +
                                           std::to_string(most_listed));
    list.resize(static_cast<std::size_t>(std::max(length, 0)));
    const int result = function(list.data(), length, count);
    keep_stored(list, *count);
    return result;
}

int list_sections(const char *file_name, Listed<expired_content_section> sections, int *count, int *success)
{
    constexpr std::size_t most_sections = 100;
    sections.resize(most_sections);
    const int result = svc_pvr_get_expired_content_sections(file_name, sections.data(), count, success);
    keep_stored(sections, *count);
    return result;
}

int write_block_given(const char *file_path, long long recTime, Implied, const BytesGiven &buf)
{
    return svc_pvr_write_sas_file(file_path, recTime, static_cast<int>(buf.bytes.size()), buf.bytes.data());
}

/// How much room a block takes is not known beforehand.
int read_block_whole(const char *file_path, long long recTime, int *bufSize, BytesHanded &buf)
{
    *bufSize = 0;
    const int result = svc_pvr_read_sas_file(file_path, recTime, bufSize, nullptr);
    if (result != PS_SUCCESS || *bufSize <= 0)
        return result;
    buf.bytes.resize(static_cast<std::size_t>(*bufSize));
    return svc_pvr_read_sas_file(file_path, recTime, bufSize, buf.bytes.data());
}

int write_info_given(const char *file_path, const pvr_file_info_s &info)
{
    pvr_file_info_s record = info;
    return svc_pvr_set_pvr_file_info_ex(file_path, &record);
}

/// A function of C++ linkage has another name there.
ExportedFunction of_cpp(std::string_view symbol, ExportedFunction function)
{
    function.symbol = symbol;
    return function;
}

} // namespace

// Retired functions are called like all others.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

// A function stands for its name, so that the two cannot be crossed.
#define FUNCTION(name, parameters, rule) exported(#name, name, parameters, rule)
#define ADAPTED(name, adapter, parameters, rule) exported(#name, name, adapter, parameters, rule)
#define LIST_OF(type, name, parameters, rule) ADAPTED(name, (list_with_room<name, type>), parameters, rule)
std::span<const ExportedFunction> exported_functions()
{
    using enum ResultRule;
    // clang-format off
static const ExportedFunction functions[] = {
// session
FUNCTION(svc_pvr_service_init, "", session),
FUNCTION(svc_pvr_service_destroy, "", product),

// playback
FUNCTION(svc_pvr_get_handle, "handle", answered),
FUNCTION(svc_pvr_get_handle_for_playback, "handle", answered),
LIST_OF(int, svc_pvr_get_handle_for_record, "handle_list, length, num_of_list", answered),
FUNCTION(svc_pvr_get_handle_for_sportsmode, "first, second, handle", local),
FUNCTION(svc_pvr_release_handle, "handle", answered),
FUNCTION(svc_pvr_play_start, "handle, uri, start_pos", answered),
FUNCTION(svc_pvr_play_stop, "handle", answered),
FUNCTION(svc_pvr_play_pause, "handle", answered),
FUNCTION(svc_pvr_play_resume, "handle", answered),
FUNCTION(svc_pvr_play_forward, "handle, forward_type", answered),
FUNCTION(svc_pvr_play_rewind, "handle, rewind_type", answered),
FUNCTION(svc_pvr_play_skip, "handle, skip_type, skip_pos, rate", answered),
FUNCTION(svc_pvr_step_frame, "handle", answered),
FUNCTION(svc_pvr_play_pause_by_service_id, "service_id", answered),
FUNCTION(svc_pvr_play_resume_by_service_id, "service_id", answered),
FUNCTION(svc_pvr_play_stop_to_dtv, "handle", answered),
FUNCTION(svc_pvr_play_stop_by_uri, "uri", answered),
FUNCTION(svc_pvr_play_stop_all, "", local),
FUNCTION(svc_pvr_get_playback_uri_by_handle, "handle, uri", answered),
FUNCTION(svc_pvr_stop_playing_sync, "called_app", own),
FUNCTION(svc_pvr_stop_playing_sync_ex, "called_app, set_source", own),
FUNCTION(svc_pvr_stop_playing_and_recording, "handle, set_source", answered),

// recording and timeshift
FUNCTION(svc_pvr_start_recording, "service_id, show, extra", answered),
FUNCTION(svc_pvr_start_recording_ex, "service_id, show, extra, reminder", answered),
FUNCTION(svc_pvr_start_timeshift, "service_id, show, extra", answered),
FUNCTION(svc_pvr_stop_recording, "service_id, show, extra", answered),
FUNCTION(svc_pvr_stop_timeshift, "service_id, show, extra", answered),
FUNCTION(svc_pvr_stop_timeshift_without_service_id, "show, extra", answered),
FUNCTION(svc_pvr_set_record_duration, "service_id, duration", answered),
FUNCTION(svc_pvr_record_start, "handle, service_id, record_type", answered),
FUNCTION(svc_pvr_record_stop, "handle", answered),
FUNCTION(svc_pvr_record_pause, "handle", local),
FUNCTION(svc_pvr_record_resume, "handle", local),
FUNCTION(svc_pvr_switch_to_record, "handle, switch_type", answered),
FUNCTION(svc_pvr_stop_pvr, "handle", answered),
FUNCTION(svc_pvr_stop_pvr_sync, "service_id, called_app", posted),
FUNCTION(svc_pvr_stop_reocrding_sync, "service_id, called_app", judged),
FUNCTION(svc_pvr_change_recording_duration_unlimited, "handle", judged),
FUNCTION(svc_pvr_set_recording_duration, "handle, duration", judged),
FUNCTION(svc_pvr_get_recording_duration, "handle, duration", answered),
FUNCTION(svc_pvr_set_recording_duration_by_service_id, "service_id, duration", answered),
FUNCTION(svc_pvr_get_recording_duration_by_service_id, "service_id, duration", answered),
FUNCTION(svc_pvr_get_max_recordable_time, "time", answered),
FUNCTION(svc_pvr_get_remaining_time, "type, remaining", answered),
FUNCTION(svc_pvr_get_current_recording_count, "count", answered),
LIST_OF(std::uint64_t, svc_pvr_get_recording_service_id_list, "list, length, count", answered),
LIST_OF(std::uint64_t, svc_pvr_get_recording_no_ts_service_id_list, "list, length, count", answered),
FUNCTION(svc_pvr_get_recording_info, "dev_handle, info", answered),
FUNCTION(svc_pvr_get_recording_type_by_service_id, "service_id, type", answered),
FUNCTION(svc_pvr_precheck_recording_available, "service_id, record_type", answer),
FUNCTION(svc_pvr_pre_channel_change_on_recording, "service_id, result, iHandle", answered),
FUNCTION(svc_pvr_is_ch_change_available_on_recording, "service_id", answer),
FUNCTION(svc_pvr_is_source_change_available_on_recording, "source_type", answer),
FUNCTION(svc_pvr_set_change_channel_result, "result", answered),
FUNCTION(svc_pvr_inform_third_part_result, "service_id, command, error_type, record_type, uid", answered),
FUNCTION(svc_pvr_set_keep_state_flag, "flag", judged),
FUNCTION(svc_pvr_get_ts_auto_start_flag, "flag", judged),
FUNCTION(svc_pvr_set_ts_auto_start_flag, "ts_auto_start_flag", judged),
FUNCTION(svc_pvr_get_err_text, "error_num, flag, text", product),

// storage devices and files
FUNCTION(get_size_of_device_info, "", number),
FUNCTION(svc_pvr_get_device_info, "dev_handle, info", answered),
LIST_OF(int, svc_pvr_get_device_list, "list, length, num_of_list", answered),
LIST_OF(int, svc_pvr_get_rec_device_list, "list, length, num_of_list", answered),
FUNCTION(svc_pvr_get_dev_total, "dev_total", answered),
FUNCTION(svc_pvr_get_rec_dev_total, "rec_dev_total", answered),
FUNCTION(svc_pvr_get_rec_dev_name, "device_key", answered),
FUNCTION(svc_pvr_get_default_rec_dev_name, "dev_name", answered),
FUNCTION(svc_pvr_get_rec_product_name, "mnt_path, product_name", answered),
FUNCTION(svc_pvr_get_default_rec_device, "dev_handle", answered),
FUNCTION(svc_pvr_set_default_rec_device, "dev_handle", answered),
FUNCTION(svc_pvr_get_next_def_rec_dev, "dev_handle", answered),
FUNCTION(svc_pvr_get_potential_rec_dev, "dev_handle", answered),
FUNCTION(svc_pvr_get_rec_dev_capacity, "dev_handle, capacity", answered),
FUNCTION(svc_pvr_is_exist_rec_device, "exists", answered),
FUNCTION(svc_pvr_is_available, "available", answered),
FUNCTION(svc_pvr_is_available_device, "", local),
FUNCTION(svc_pvr_check_device, "dev_handle", answered),
FUNCTION(svc_pvr_format, "dev_handle, dev_type", judged),
FUNCTION(svc_pvr_start_performance_test, "dev_handle", judged),
FUNCTION(svc_pvr_get_performance_test_result, "dev_handle, result", answered),
FUNCTION(svc_pvr_is_need_performance_test, "dev_handle", judged),
FUNCTION(svc_pvr_mkdir, "path, mode", judged),
FUNCTION(svc_pvr_delete_record_file, "file_path, ret", answered),
FUNCTION(svc_pvr_delete_segment_file, "service_id", answered),
FUNCTION(svc_pvr_remove_inf, "file_path, mode", answered),
FUNCTION(svc_pvr_is_recording_file, "file_path, result", answered),
FUNCTION(svc_pvr_get_system_record_num, "num", answered),
FUNCTION(svc_pvr_check_parent_lock, "file_path, result", answered),
FUNCTION(svc_pvr_make_thumbnail_file, "uri, userdata, width, height", answered),
FUNCTION(svc_pvr_get_inf_uri, "handle, uri", answered),
FUNCTION(svc_pvr_get_recording_uri, "handle, uri", answered),
FUNCTION(svc_pvr_get_recording_uri_by_service_id, "service_id, uri", answered),
FUNCTION(svc_pvr_get_current_recording_uri, "uri", answered),

// status and channels
FUNCTION(svc_pvr_is_recording, "service_id, result", answered),
FUNCTION(svc_pvr_is_timer_recording, "service_id, result", answered),
FUNCTION(svc_pvr_is_timeshifting, "service_id, result", answered),
FUNCTION(svc_pvr_is_recording_now, "result", answered),
FUNCTION(svc_pvr_is_timeshifting_now, "result", answered),
FUNCTION(svc_pvr_is_playing_multimedia, "result", answered),
FUNCTION(svc_pvr_is_recording_with_main_tuner, "service_id, result", answered),
FUNCTION(svc_pvr_is_past_record_complete, "service_id, result", answered),
FUNCTION(svc_pvr_get_pvr_state, "play_state, record_state", answered),
FUNCTION(svc_pvr_get_play_state_by_service_id, "service_id, state", answered),
FUNCTION(svc_pvr_get_record_state_by_service_id, "service_id, state, is_timeshift", judged),
FUNCTION(svc_pvr_get_progress, "handle, out_result, relative_second, absolute_second", answered),
FUNCTION(svc_pvr_get_progress_by_service_id, "service_id, out_result, relative_second, absolute_second", answered),
FUNCTION(svc_pvr_get_share_data, "share_data_type, value", judged),
FUNCTION(svc_pvr_set_share_data, "share_data_type, share_data_value", judged),
FUNCTION(svc_pvr_is_support_pvr, "supported", supported),
FUNCTION(svc_pvr_get_channel_info, "service_id, info", answered),
FUNCTION(svc_pvr_is_no_signal_channel, "service_id, result", answered),
FUNCTION(svc_pvr_is_audio_only_channel, "service_id, result", answered),
FUNCTION(svc_pvr_is_child_lock_channel, "service_id, result", answered),
FUNCTION(svc_pvr_is_analog_channel, "service_id, result", answered),
FUNCTION(svc_pvr_is_all_descrambled, "result", answered),
FUNCTION(svc_pvr_get_av_status, "service_id, av_status", answered),
FUNCTION(svc_pvr_is_date_set, "result", answered),
FUNCTION(svc_pvr_get_current_service_id, "service_id", answered),
FUNCTION(svc_pvr_get_current_livetv_service_id, "service_id", answered),
FUNCTION(svc_pvr_set_channel_multilanguage_string, "data, length", answered),
FUNCTION(svc_pvr_set_channel_number_string, "handle, channel_number_name", judged),

// callbacks
FUNCTION(svc_pvr_register_result_pvr_cb, "func, user_data", callback),
FUNCTION(svc_pvr_register_result_pvr_point_cb, "func, user_data", callback),
FUNCTION(svc_pvr_register_to_other_apps_cb, "func, user_data", callback),
FUNCTION(svc_pvr_register_get_pvr_state_cb, "func, user_data", callback),
FUNCTION(svc_pvr_register_signal_cb, "func, user_data", callback),
FUNCTION(svc_pvr_register_signal_pointer_cb, "func, user_data", callback),
FUNCTION(svc_pvr_register_signal_cb_in_list, "func, user_data", callback),
FUNCTION(svc_pvr_unregister_result_pvr_cb, "func", product),
FUNCTION(svc_pvr_unregister_result_pvr_point_cb, "func", product),
FUNCTION(svc_pvr_unregister_to_other_apps_cb, "func", product),
FUNCTION(svc_pvr_unregister_get_pvr_state_cb, "func", product),
FUNCTION(svc_pvr_unregister_signal_cb, "func", product),
FUNCTION(svc_pvr_unregister_signal_pointer_cb, "func", product),
FUNCTION(svc_pvr_unregister_signal_cb_in_list, "func", product),
FUNCTION(get_size_of_pvr_service_signal, "", number),
FUNCTION(get_size_of_pvr_service_result, "", number),
FUNCTION(get_size_of_pvr_result_third, "", number),

// files beside a recording
FUNCTION(svc_pvr_get_pvr_file_info, "file_path, info", product),
ADAPTED(svc_pvr_set_pvr_file_info_ex, write_info_given, "file_path, info", told),
FUNCTION(get_size_of_pvr_file_info, "", number),
FUNCTION(svc_pvr_is_audio_only, "file_path, is_audio_only", product),
FUNCTION(svc_pvr_is_file_recorded_local, "file_path, result", local),
FUNCTION(IsFileRecordedLocal, "file_path, result", number),
FUNCTION(IsFileRecordedLocalVexan, "file_path, result", number),
ADAPTED(svc_pvr_write_sas_file, write_block_given, "file_path, recTime, bufSize, buf", told),
ADAPTED(svc_pvr_read_sas_file, read_block_whole, "file_path, recTime, bufSize, buf", local),
FUNCTION(svc_pvr_get_yuv_info, "uri, yuv_info", local),

// viewing rights
FUNCTION(svc_pvr_is_blocked_by_parental_control, "file_name, blocked", rights),
FUNCTION(svc_pvr_is_this_whole_file_exceeded_retention_limit, "file_name, exceeded", rights),
ADAPTED(svc_pvr_get_expired_content_sections, list_sections, "file_name, sections, count, success", rights),
FUNCTION(get_size_of_expired_content_section, "", number),
FUNCTION(svc_pvr_is_thumbnail_valid, "file_name, position, valid", local),
FUNCTION(svc_pvr_get_ci_thumb_type, "file_name, thumb_type, success", local),
FUNCTION(svc_pvr_get_content_info, "file_name, info_type, play_count, success", local),
FUNCTION(GetDtvType, "", number),
FUNCTION(GetTVStandard, "", number),
FUNCTION(IsSupportCI, "", number),
FUNCTION(IsBlockedByParentalControl, "path, blocked", rights),
FUNCTION(IsThisWholeFileExceededRetentionLimit, "path, exceeded", rights),
FUNCTION(IsThumbnailValid, "path, position, valid", rights),
FUNCTION(GetCIThumbType, "path, thumb_type", rights),
FUNCTION(GetContentInfo, "path, info_type, play_count", rights),
FUNCTION(GetExpiredContentSections, "path, count, first_start, first_end", rights),
of_cpp("_Z10IsATSC3UrlPKc", FUNCTION(IsATSC3Url, "path", number)),

// answered by the library
FUNCTION(svc_pvr_is_highlight_player_available, "", local),
FUNCTION(svc_pvr_is_auto_highlight, "", local),
FUNCTION(svc_pvr_is_notify_game, "", local),
FUNCTION(svc_pvr_get_sports_type, "", local),
FUNCTION(svc_pvr_is_sports_mode, "", local),
FUNCTION(svc_pvr_send_thumbnail_request, "", local),
FUNCTION(svc_pvr_get_bookmark_list, "", local),
FUNCTION(svc_pvr_get_highlight_player_flag, "flag", local),
FUNCTION(svc_pvr_set_highlight_player_flag, "flag", local),
FUNCTION(svc_pvr_enter_highlight_player, "", local),
FUNCTION(svc_pvr_notify_enter_and_exist_highlight_player, "enter", local),
FUNCTION(svc_pvr_get_mls_service_id_by_screen_id, "screen_id", local),
FUNCTION(svc_pvr_set_bookmark, "uri", local),
FUNCTION(svc_pvr_get_last_bookmark, "uri", local),
FUNCTION(svc_pvr_get_autohighlight_cb, "cb", local),
FUNCTION(svc_pvr_can_show_record_stop_msg, "service_id", answered),
FUNCTION(svc_pvr_can_show_record_stop_msg_type, "service_id", answered),
FUNCTION(svc_pvr_is_show_record_banner_by_info_key, "service_id", answered),
FUNCTION(svr_pvr_clear_thumbnail_callback, "", product),

// retired
FUNCTION(svc_pvr_is_recording_available, "out", retired),
FUNCTION(svc_pvr_get_recording_time, "out", retired),
FUNCTION(svc_pvr_get_recording_channel, "out", retired),
FUNCTION(svc_pvr_is_pvr_operating, "out", retired),
FUNCTION(svc_pvr_is_recording_pause, "out", retired),
FUNCTION(svc_pvr_get_rec_default_dev_index, "out", retired),
FUNCTION(svc_pvr_get_rec_device_key_by_index, "out", retired),
FUNCTION(svc_pvr_get_recording_file_info, "out", retired),
FUNCTION(svc_pvr_remove_recording_info, "out", retired),
};
    // clang-format on
    return functions;
}
#undef FUNCTION
#undef ADAPTED
#undef LIST_OF
#pragma GCC diagnostic pop

} // namespace pvrctl
