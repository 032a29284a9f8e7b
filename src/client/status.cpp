// What the service is doing: recording, timeshift and playback; and the values that applications share.
#include "client/call.h"

#include <atomic>
#include <cinttypes>

using namespace pvr;

namespace {

/// The service's answer to svc_pvr_is_support_pvr once it was other than 0, which is never asked again.
constinit std::atomic<int> support_answer{0};

} // namespace

// ---- recording and timeshift

int svc_pvr_is_recording(std::uint64_t service_id, int *result) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int value = 0;
    auto answer = call.remote(wire::is_recording, service_id, &value);
    if (answer) {
        write_out(result, value);
        INFO(" Method: svc_pvr_is_recording is called with [service_id:%" PRIu64 " result:%d]\n", service_id, value);
    }
    return answer.transport_rule();
}

int svc_pvr_is_timer_recording(std::uint64_t service_id, int *result) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int value = 0;
    auto answer = call.remote(wire::is_timer_recording, service_id, &value);
    if (answer) {
        write_out(result, value);
        INFO(" Method: svc_pvr_is_recording is called with [service_id:%" PRIu64 " result:%d]\n", service_id,
             value); // deliberately the other call's name
    }
    return answer.transport_rule();
}

int svc_pvr_is_timeshifting(std::uint64_t service_id, int *result) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int value = 0;
    auto answer = call.remote(wire::is_timeshifting, service_id, &value);
    if (answer) {
        write_out(result, value);
        INFO(" Method: svc_pvr_is_timeshifting is called with [service_id:%" PRIu64 " result:%d]\n", service_id, value);
    }
    return answer.transport_rule();
}

int svc_pvr_is_recording_now(int *result) noexcept
{
    Call call(ENTRY("\n"));
    int value = 0;
    auto answer = call.remote(wire::is_recording_now, &value);
    if (answer)
        write_out(result, value);
    return answer.transport_rule();
}

int svc_pvr_is_timeshifting_now(int *result) noexcept
{
    Call call(ENTRY("\n"));
    int value = 0;
    auto answer = call.remote(wire::is_timeshifting_now, &value);
    if (answer)
        write_out(result, value);
    return answer.transport_rule();
}

int svc_pvr_is_recording_with_main_tuner(std::uint64_t service_id, int *result) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int value = 0;
    auto answer = call.remote(wire::is_recording_with_main_tuner, service_id, &value);
    if (answer) {
        write_out(result, value);
        INFO("[service_id:%" PRIu64 "] [result:%d]\n", service_id, value);
    }
    return answer.transport_rule();
}

int svc_pvr_is_past_record_complete(std::uint64_t service_id, int *result) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int value = 0;
    auto answer = call.remote(wire::is_past_record_complete, service_id, &value);
    if (answer)
        write_out(result, value);
    return answer.transport_rule();
}

int svc_pvr_get_record_state_by_service_id(std::uint64_t service_id, int *state, int *is_timeshift) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int record_state = 0;
    int timeshift = 0;
    auto answer =
        call.remote(wire::get_record_state_by_service_id, service_id, &record_state, &timeshift, service_result);
    if (answer) {
        write_out(state, record_state);
        write_out(is_timeshift, timeshift);
    }
    return answer.zero_rule();
}

// ---- playback

int svc_pvr_is_playing_multimedia(int *result) noexcept
{
    Call call(ENTRY("\n"));
    int value = 0;
    auto answer = call.remote(wire::is_playing_multimedia, &value);
    if (answer) {
        write_out(result, value);
        INFO(" is_playing_multimedia [result:%d]\n", value);
    }
    return answer.transport_rule();
}

int svc_pvr_get_pvr_state(int *play_state, int *record_state) noexcept
{
    Call call(ENTRY("\n"));
    int play = 0;
    int record = 0;
    auto answer = call.remote(wire::get_pvr_state, &play, &record);
    if (answer) {
        write_out(play_state, play);
        write_out(record_state, record);
    }
    return answer.transport_rule();
}

int svc_pvr_get_play_state_by_service_id(std::uint64_t service_id, int *state) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int play_state = 0;
    auto answer = call.remote(wire::get_play_state_by_service_id, service_id, &play_state);
    if (answer)
        write_out(state, play_state);
    return answer.transport_rule();
}

int svc_pvr_get_progress(int handle, int *out_result, std::int64_t *relative_second,
                         std::int64_t *absolute_second) noexcept
{
    Call call(ENTRY("[handle:%d]\n", handle));
    int outcome = 0;
    std::int64_t relative = 0;
    std::int64_t absolute = 0;
    auto answer = call.remote(wire::get_progress, handle, &outcome, &relative, &absolute, service_result);
    if (answer) {
        write_out(out_result, outcome);
        write_out(relative_second, relative);
        write_out(absolute_second, absolute);
    }
    return answer.transport_rule();
}

int svc_pvr_get_progress_by_service_id(std::uint64_t service_id, int *out_result, std::int64_t *relative_second,
                                       std::int64_t *absolute_second) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    int outcome = 0;
    std::int64_t relative = 0;
    std::int64_t absolute = 0;
    auto answer =
        call.remote(wire::get_progress_by_service_id, service_id, &outcome, &relative, &absolute, service_result);
    if (answer) {
        write_out(out_result, outcome);
        write_out(relative_second, relative);
        write_out(absolute_second, absolute);
    }
    return answer.transport_rule();
}

// ---- shared values, and the service itself

int svc_pvr_get_share_data(int share_data_type, std::int64_t *value) noexcept
{
    Call call(ENTRY("[share_data_type:%d]\n", share_data_type));
    std::int64_t shared = 0;
    auto answer = call.remote(wire::get_share_data, share_data_type, &shared, service_result);
    if (answer)
        write_out(value, shared);
    return answer.one_is_success_rule();
}

int svc_pvr_set_share_data(int share_data_type, std::int64_t share_data_value) noexcept
{
    Call call(ENTRY("[share_data_type:%d][share_data_value:%" PRId64 "]\n", share_data_type, share_data_value));
    auto answer = call.remote(wire::set_share_data, share_data_type,
                              static_cast<std::uint64_t>(share_data_value), // the wire carries the bit pattern
                              service_result);
    return answer.one_is_success_rule();
}

int svc_pvr_is_support_pvr(int *supported) noexcept
{
    const Here here = ENTRY("\n");
    if (const int known = support_answer; known != 0) {
        write_out(supported, known == 1 ? 1 : 0);
        PLAIN_INFO("[result:%d]\n", known == 1 ? 1 : 0);
        return PS_SUCCESS;
    }

    Call call = Call::on_existing_session(here);
    int result = 0;
    auto answer = call.remote(wire::is_support_pvr, &result);
    if (!answer)
        return answer.transport_rule();
    write_out(supported, result == 1 ? 1 : 0);
    if (result == 0) {
        PLAIN_FAILURE("[PS_FACTORY_ERROR]\n");
        return PS_FACTORY_ERROR;
    }
    support_answer = result;
    PLAIN_INFO("[result:%d]\n", result == 1 ? 1 : 0);
    return PS_SUCCESS;
}
