// The remote methods by wire name, one line each, in the interface's order.
#pragma once

#include "client/wire_format.h"
#include "pvr_gdbus_generated.h"

namespace pvr::wire {

// One name serves for the wire and for the generated function whose type tells the arguments, so that
// two cannot be crossed. That type calls every container a GVariant: such a row says what is in it.
// clang-format off
#define WIRE(method, ...) \
    inline constexpr Remote<decltype(org_vexan_tv_pvr_call_##method##_sync)> method {#method __VA_OPT__(, ) __VA_ARGS__}
#define WIRE_ASYNCHRONOUS(method) \
    inline constexpr Remote<decltype(org_vexan_tv_pvr_call_##method)> method {#method}

WIRE(call_app);
WIRE(get_handle);
WIRE(get_handle_for_record, "(@aii)");
WIRE(get_handle_for_playback);
WIRE(release_handle);
WIRE(play_pause);
WIRE(step_frame);
WIRE(play_resume);
WIRE(play_forward);
WIRE(play_rewind);
WIRE(play_skip);
WIRE(play_start);
WIRE(play_stop);
WIRE(play_stop_to_dtv);
WIRE(play_stop_by_uri);
WIRE(play_pause_by_service_id);
WIRE(play_resume_by_service_id);
WIRE(record_start);
WIRE(record_stop);
WIRE(switch_to_record);
WIRE(stop_pvr);
WIRE(stop_playing_and_recording);
WIRE(get_recording_type_by_service_id);
WIRE(get_progress);
WIRE(get_progress_by_service_id);
WIRE(set_recording_duration);
WIRE(set_channel_number_string);
WIRE(get_recording_duration);
WIRE(set_recording_duration_by_service_id);
WIRE(get_recording_duration_by_service_id);
WIRE(is_change_available_on_recording);
WIRE(format);
WIRE(is_need_performance_test);
WIRE(start_performance_test);
WIRE(get_performance_test_result);
WIRE(check_device);
WIRE(get_default_rec_device);
WIRE(get_potential_rec_dev);
WIRE(get_next_def_rec_dev);
WIRE(get_device_list, "(@aiii)");
WIRE(get_rec_device_list, "(@aiii)");
WIRE(get_device_info, "(@(iisssxx)i)");
WIRE(get_dev_total);
WIRE(get_record_dev_total);
WIRE(get_rec_device_name);
WIRE(get_rec_dev_name);
WIRE(delete_record_file);
WIRE(get_pvr_state);
WIRE(is_timeshifting);
WIRE(is_recording);
WIRE(is_timer_recording);
WIRE(is_recording_now);
WIRE(is_playing_multimedia);
WIRE(set_default_rec_device);
WIRE(get_rec_dev_capacity);
WIRE(is_exist_rec_device);
WIRE(is_available);
WIRE(get_current_recording_count);
WIRE(set_pvr_file_info);
WIRE(remove_inf);
WIRE(is_recording_file);
WIRE(is_past_record_complete);
WIRE(get_product_name);
WIRE(get_current_service_id);
WIRE(get_current_livetv_service_id);
WIRE(get_recording_uri);
WIRE(get_recording_uri_by_service_id);
WIRE(get_current_recording_uri);
WIRE(is_support_pvr);
WIRE(get_system_record_num);
WIRE(get_inf_uri);
WIRE(precheck_recording_available);
WIRE(get_channel_info, "(@a(v)i)");
WIRE(is_analog_channel);
WIRE(is_child_lock_channel);
WIRE(is_audio_only_channel);
WIRE(is_no_signal_channel);
WIRE(is_date_set);
WIRE(get_play_state_by_service_id);
WIRE(get_record_state_by_service_id);
WIRE(get_recording_service_id_list, "(@ati)");
WIRE(sync_stop_playing);
WIRE_ASYNCHRONOUS(sync_stop_pvr);
WIRE(sync_stop_recording);
WIRE(set_change_channel_flag);
WIRE(set_ts_auto_start_flag);
WIRE(get_ts_auto_start_flag);
WIRE(check_parent_lock);
WIRE(mkdir);
WIRE(delete_segment_record);
WIRE(set_channel_multilanguage_string);
WIRE(set_share_data);
WIRE(get_share_data);
WIRE(is_recording_with_main_tuner);
WIRE(set_keep_state_flag);
WIRE(inform_third_part);
WIRE(set_fp_rec_time);
WIRE(get_playback_uri_by_handle);
WIRE(change_recording_duration_unlimited);
WIRE(get_recording_info, "(@(tiii))");
WIRE(is_all_descrambled);
WIRE(get_av_status);
WIRE(get_max_recordable_time);
WIRE(is_timeshifting_now);
WIRE(make_thumbnail_file);
WIRE(is_source_change_available_on_recording);
// clang-format on

#undef WIRE
#undef WIRE_ASYNCHRONOUS

} // namespace pvr::wire
