#include "events/others.h"

#include "client/byte_order.h"
#include "events/browser_queue.h"
#include "events/callbacks.h"
#include "events/names.h"

#include <cinttypes>
#include <cstdlib>

namespace pvr {
namespace {

using OthersRegistration = Registration<pvr_result_third_cb>;

constexpr int recording_exception_that_failed = 403; ///< the one result of that report that is no success
constexpr int no_uid = -1;

const char *name_of_method(int method) noexcept { return _get_pvr_macro_name(ps_third_part_method_e_str, method); }
const char *name_of_command(int command) noexcept { return _get_pvr_macro_name(ps_third_part_command_e_str, command); }

void call(const OthersRegistration &others, const pvr_result_third &third) noexcept
{
    pvr_result_third record = third;
    record.third_part_method = little_endian(record.third_part_method);
    record.third_part_command = little_endian(record.third_part_command);
    record.result = little_endian(record.result);
    record.service_result = little_endian(record.service_result);
    record.service_id = little_endian(record.service_id);
    record.UID = little_endian(record.UID);
    others.function(record, others.user_data);
}

void tell_of_playback(Here here, const OthersRegistration &others, const ResultNews &news) noexcept
{
    pvr_result_third third{};
    third.third_part_method = PS_METHOD_TYPE_PLAY;
    third.third_part_command = news.result.method == PS_PLAY_STOP ? PS_COMMAND_STOP : PS_COMMAND_START;
    call(others, third); // deliberately without the result
    PLAIN_INFO_AT(here, "to_other_apps result[handle:%d third_part_method:%s|%d third_part_command:%s|%d]\n",
                  int{news.result.handle}, name_of_method(third.third_part_method), int{third.third_part_method},
                  name_of_command(third.third_part_command), int{third.third_part_command});
}

bool is_success_for_others(int method, int result) noexcept
{
    // Deliberately: a recording that ended by itself counts as done, whatever the reason but one.
    return method == PS_RECORD_EXCEPTION ? result != recording_exception_that_failed : result == 0;
}

void tell_of_recording(Here here, const OthersRegistration &others, const ResultNews &news) noexcept
{
    const int method = news.result.method;
    const int result = news.result.result;
    if (news.record_type == PS_RECORD_TYPE_NONE || (method == PS_PRECHECK_RECORDING_AVAILABLE && result == 0)) {
        PLAIN_INFO_AT(here, "record_type == PS_RECORD_TYPE_NONE || PS_PRECHECK_RECORDING_AVAILABLE OK no need send to "
                            "other app.\n");
        return;
    }
    // Deliberately, the reports of little space look like a switch to recording.
    const bool is_switch =
        method == PS_SWITCH_TO_RECORD || method == PS_RECORD_DISK_LESS_FIFTY || method == PS_RECORD_DISK_LESS_ALERT;
    const bool is_start = method == PS_RECORD_START || method == PS_PRECHECK_RECORDING_AVAILABLE || is_switch;
    pvr_result_third third{};
    third.third_part_method = is_switch                                  ? PS_METHOD_TYPE_SWITCH_TO_RECORD
                              : news.record_type == PS_RECORD_TYPE_TIMER ? PS_METHOD_TYPE_TIMER_RECORD
                                                                         : PS_METHOD_TYPE_RECORD;
    third.third_part_command = is_start ? PS_COMMAND_START : PS_COMMAND_STOP;
    third.result = is_success_for_others(method, result) ? 1 : 0;
    third.service_result = result;
    third.service_id = news.result.service_id;
    third.UID = news.uid;
    call(others, third);
    PLAIN_INFO_AT(here,
                  "to_other_apps result[third_part_method:%s|%d third_part_command:%s|%d result:%d service_id:%" PRIu64
                  ", UID:%ld]\n",
                  name_of_method(third.third_part_method), int{third.third_part_method},
                  name_of_command(third.third_part_command), int{third.third_part_command}, int{third.result},
                  std::uint64_t{third.service_id}, long{third.UID});
}

void tell_of_coming_playback(Here here, const OthersRegistration &others, const ResultNews &) noexcept
{
    pvr_result_third third{};
    third.third_part_method = PS_METHOD_TYPE_PLAY;
    third.third_part_command = PS_COMMAND_PRE_START;
    PLAIN_INFO_AT(here, "to_other_apps result[third_part_method:%s|%d third_part_command:%s|%d result:%d]\n",
                  name_of_method(third.third_part_method), int{third.third_part_method},
                  name_of_command(third.third_part_command), int{third.third_part_command}, int{third.result});
    call(others, third);
}

void tell_of_failed_launch(Here here, const OthersRegistration &others, const ResultNews &news) noexcept
{
    pvr_result_third third{};
    third.service_result = PS_RECORD_LAUNCH_FAILED;
    third.service_id = news.result.service_id;
    third.UID = news.uid;
    PLAIN_INFO_AT(here, "result[command:%s|%d service_id:%" PRIu64 ", UID:%ld]\n",
                  _get_pvr_macro_name(ps_method_e_str, news.result.method), int{news.result.method},
                  std::uint64_t{third.service_id}, long{third.UID});
    call(others, third);
}

void tell_of_duration(Here here, const OthersRegistration &others, const ResultNews &) noexcept
{
    pvr_result_third third{};
    third.third_part_method = PS_METHOD_TYPE_DURATION_ALREADY;
    third.third_part_command = PS_COMMAND_START;
    third.result = 1;
    third.UID = no_uid;
    PLAIN_INFO_AT(here, "to_other_apps result[third_part_method:%s|%d third_part_command:%s|%d result:%d UID:%ld]\n",
                  name_of_method(third.third_part_method), int{third.third_part_method},
                  name_of_command(third.third_part_command), int{third.third_part_command}, int{third.result},
                  long{third.UID});
    call(others, third);
}

void tell_state(Here here, const ResultNews &news) noexcept
{
    const auto [function, user_data] = to_pvr_get_state.get();
    if (function == nullptr)
        return;
    PLAIN_INFO_AT(here, "result[method:%s|%d result:%d]\n", _get_pvr_macro_name(ps_method_e_str, news.result.method),
                  int{news.result.method}, int{news.state});
    function(news.state, user_data);
}

} // namespace

void tell_others(Here here, Others how, const ResultNews &news) noexcept
{
    if (how == Others::state)
        return tell_state(here, news);
    if (how == Others::thumbnail)
        return _call_third_party_callback_func(news.status, news.location);

    const OthersRegistration others = to_other_apps.get();
    if (others.function == nullptr)
        return;
    switch (how) {
    case Others::playback:
        return tell_of_playback(here, others, news);
    case Others::recording:
        return tell_of_recording(here, others, news);
    case Others::pre_start:
        return tell_of_coming_playback(here, others, news);
    case Others::launch_failed:
        return tell_of_failed_launch(here, others, news);
    case Others::duration_set:
        return tell_of_duration(here, others, news);
    default:
        return;
    }
}

void _call_third_party_callback_func(int status, const char *location) noexcept
{
    constexpr int thumbnail_event = 6; // what the media browser knows a thumbnail by
    const TakenNode node = take_from_browser_queue(location);
    if (!node)
        return;
    // Detached before it is called: the callback may clear the queue.
    DETAIL("call media browser's callback, location[%s] uri[%s]\n", node->location, location);
    if (node->callback != nullptr)
        node->callback(thumbnail_event, 0, 0, status, node->user_data);
    else
        PLAIN_FAILURE("cur_node->callback == NULL\n");
}

} // namespace pvr
