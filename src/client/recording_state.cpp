// What is being recorded, the flags that steer recording, and what a change of channel or source would do.
#include "client/byte_order.h"
#include "client/call.h"
#include "events/names.h"

#include <cinttypes>

using namespace pvr;

// ---- which recordings

int svc_pvr_get_current_recording_count(int *count) noexcept
{
    Call call(ENTRY("\n"));
    int recordings = 0;
    auto answer = call.remote(wire::get_current_recording_count, &recordings);
    if (answer)
        write_out(count, recordings);
    return answer.transport_rule();
}

int svc_pvr_get_recording_service_id_list(std::uint64_t *list, int length, int *count) noexcept
{
    Call call(ENTRY("[length:%d]\n", length));
    OwnedVariant ids;
    int num_of_list = 0;
    auto answer = call.remote(wire::get_recording_service_id_list, &ids, &num_of_list);
    if (answer) {
        write_out(count, num_of_list);
        DETAIL("num_of_list : %d \n", num_of_list);
        store_list(Here(), ids, num_of_list, list, length);
    }
    return answer.transport_rule();
}

int svc_pvr_get_recording_no_ts_service_id_list(std::uint64_t *list, int length, int *count) noexcept
{
    Call call(ENTRY("[length:%d]\n", length));
    OwnedVariant ids;
    int num_of_list = 0;
    auto answer = call.remote(wire::get_recording_service_id_list, &ids, &num_of_list);
    if (!answer)
        return answer.transport_rule();
    DETAIL("num_of_list : %d \n", num_of_list);
    int stored = 0;
    if (num_of_list >= 1)
        for (const auto [index, value] : elements<std::uint64_t>(ids)) {
            PLAIN_INFO("index[%d] value[%" PRIu64 "]\n", index, value);
            int recording = 0;
            static_cast<void>(
                call.remote(wire::is_recording, value, &recording)); // deliberately: unknown is no recording
            if (recording == 0) {
                INFO("[value:%" PRIu64 " is TimeShift]\n", value);
                break; // deliberately: the ids behind a timeshift are not examined
            }
            if (stored >= length)
                break;
            if (list != nullptr)
                list[stored] = value;
            ++stored;
        }
    write_out(count, stored);
    PLAIN_INFO("count:%d \n", stored);
    return answer.transport_rule();
}

int svc_pvr_get_recording_info(int dev_handle, pvr_recording_info *info) noexcept
{
    Call call(ENTRY("[dev_handle:%d]\n", dev_handle));
    OwnedVariant recording;
    auto answer = call.remote(wire::get_recording_info, dev_handle, &recording);
    if (!answer)
        return answer.transport_rule();
    if (info == nullptr || !recording)
        return call.refused(PLAIN_FAILURE("[PS_CALL_METHOD_FAILED][info == NULL]\n"));
    guint64 words = 0;
    pvr_recording_info record{};
    gint32 values[3] = {};
    g_variant_get(recording.get(), "(tiii)", &words, &values[0], &values[1], &values[2]);
    record.low_word = little_endian(static_cast<std::uint32_t>(words));
    record.high_word = little_endian(static_cast<std::uint32_t>(words >> 32));
    record.opaque_8 = little_endian(values[0]);
    record.opaque_12 = little_endian(values[1]);
    record.opaque_16 = little_endian(values[2]);
    *info = record;
    return answer.transport_rule();
}

int svc_pvr_get_recording_type_by_service_id(std::uint64_t service_id, int *type) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    auto answer = call.remote(wire::get_recording_type_by_service_id, service_id, service_result);
    return answer.result_out_rule(type);
}

// ---- may a recording be made, may the channel be changed

int svc_pvr_precheck_recording_available(std::uint64_t service_id, int record_type) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "][record_type:%s|%d]\n", service_id,
                    _get_pvr_macro_name(ps_record_type_e_str, record_type), record_type));
    int available = 0;
    auto answer = call.remote(wire::precheck_recording_available, service_id, record_type, &available);
    return answer.value_rule(available);
}

int svc_pvr_pre_channel_change_on_recording(std::uint64_t service_id, int *result, int *iHandle) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int handle = 0;
    auto answer = call.remote(wire::is_change_available_on_recording, service_id, service_result, &handle);
    if (answer) {
        write_out(iHandle, handle);
        INFO("[service_id:%" PRIu64 "] [result:%d] [iHandle:%d] Done\n", service_id, answer.result(), handle);
    }
    return answer.result_out_rule(result);
}

int svc_pvr_is_ch_change_available_on_recording(std::uint64_t service_id) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int available = 0;
    int unused_handle = 0;
    auto answer = call.remote(wire::is_change_available_on_recording, service_id, &available, &unused_handle);
    if (answer)
        INFO("[service_id:%" PRIu64 "] [result:%d] Done\n", service_id, available);
    return answer.value_rule(available);
}

int svc_pvr_is_source_change_available_on_recording(int source_type) noexcept
{
    Call call(ENTRY("[source_type:%d]\n", source_type));
    int available = 0;
    auto answer = call.remote(wire::is_source_change_available_on_recording, source_type, &available);
    if (answer)
        INFO(" Method: svc_pvr_is_source_change_available_on_recording is called with [source_type:%d result:%d]\n",
             source_type, available);
    return answer.value_rule(available);
}

int svc_pvr_set_change_channel_result(int result) noexcept
{
    Call call(ENTRY("[result:%d]\n", result));
    const auto widened = static_cast<std::uint64_t>(std::int64_t{result}); // -1 travels as 2^64 - 1
    auto answer = call.remote(wire::set_change_channel_flag, widened);
    return answer.transport_rule();
}

int svc_pvr_inform_third_part_result(std::uint64_t service_id, int command, int error_type, int record_type,
                                     int uid) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "][command:%d][error_type:%d][record_type:%d][uid:%d]\n", service_id,
                    command, error_type, record_type, uid));
    auto answer = call.remote(wire::inform_third_part, command, error_type, record_type, service_id, uid);
    return answer.transport_rule();
}

// ---- flags

int svc_pvr_set_keep_state_flag(int flag) noexcept
{
    Call call(ENTRY("[flag:%d]\n", flag));
    auto answer = call.remote(wire::set_keep_state_flag, flag, service_result);
    return answer.one_is_success_rule();
}

int svc_pvr_get_ts_auto_start_flag(int *flag) noexcept
{
    Call call(ENTRY("\n"));
    int start_flag = 0;
    auto answer = call.remote(wire::get_ts_auto_start_flag, &start_flag, service_result);
    if (answer)
        write_out(flag, start_flag);
    return answer.zero_rule();
}

int svc_pvr_set_ts_auto_start_flag(int ts_auto_start_flag) noexcept
{
    Call call(ENTRY("[ts_auto_start_flag:%d]\n", ts_auto_start_flag));
    auto answer = call.remote(wire::set_ts_auto_start_flag, ts_auto_start_flag, service_result);
    return answer.zero_rule();
}
