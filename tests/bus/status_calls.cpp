#include "bus/row_shapes.h"
#include "pvr_service_api.h"

#include <functional>
#include <ostream>
#include <utility>
#include <vector>

using namespace support;
using Result = RemoteCall::Result;

namespace {

const std::string wide = "[service_id:" + wide_id_text + "]";
const std::string wide_argument = "(uint64 " + wide_id_text + ",)";

/// The line of the queries that name what they ask.
Lines called(const std::string &name)
{
    return {info(" Method: " + name + " is called with [service_id:" + wide_id_text + " result:%]")};
}

// clang-format off
const std::vector<RemoteCall> rows{
    number("svc_pvr_is_recording", [](int *out) { return svc_pvr_is_recording(wide_id, out); },
           wide, request("is_recording", "t", wide_argument), Beside::nothing, called("svc_pvr_is_recording")),
    number("svc_pvr_is_timer_recording", [](int *out) { return svc_pvr_is_timer_recording(wide_id, out); },
           wide, request("is_timer_recording", "t", wide_argument), Beside::nothing, called("svc_pvr_is_recording")),
    number("svc_pvr_is_timeshifting", [](int *out) { return svc_pvr_is_timeshifting(wide_id, out); },
           wide, request("is_timeshifting", "t", wide_argument), Beside::nothing, called("svc_pvr_is_timeshifting")),
    number("svc_pvr_is_recording_now", svc_pvr_is_recording_now, "", request("is_recording_now", "", "()")),
    number("svc_pvr_is_timeshifting_now", svc_pvr_is_timeshifting_now, "", request("is_timeshifting_now", "", "()")),
    number("svc_pvr_is_recording_with_main_tuner", [](int *out) { return svc_pvr_is_recording_with_main_tuner(wide_id, out); },
           wide, request("is_recording_with_main_tuner", "t", wide_argument), Beside::nothing, {info(wide + " [result:%]")}),
    number("svc_pvr_is_past_record_complete", [](int *out) { return svc_pvr_is_past_record_complete(wide_id, out); },
           wide, request("is_past_record_complete", "t", wide_argument)),
    number("svc_pvr_is_playing_multimedia", svc_pvr_is_playing_multimedia, "", request("is_playing_multimedia", "", "()"),
           Beside::nothing, {info(" is_playing_multimedia [result:%]")}),
    number("svc_pvr_get_play_state_by_service_id", [](int *out) { return svc_pvr_get_play_state_by_service_id(wide_id, out); },
           wide, request("get_play_state_by_service_id", "t", wide_argument)),
    control("svc_pvr_set_share_data", [] { return svc_pvr_set_share_data(3, -2); },
            "[share_data_type:3][share_data_value:-2]", request("set_share_data", "it", "(3, uint64 18446744073709551614)"),
            Rule::one_is_success),
};
// clang-format on

const RemoteCall get_pvr_state{
    .name = "svc_pvr_get_pvr_state",
    .call =
        [](std::ostream &outputs) {
            int play_state = -77;
            int record_state = -77;
            const int returned = svc_pvr_get_pvr_state(&play_state, &record_state);
            outputs << play_state << "|" << record_state;
            return returned;
        },
    .untouched = "-77|-77",
    .entry = entry(""),
    .is_checked = true,
    .request = request("get_pvr_state", "", "()"),
    .result = Result::is_the_answer,
    .outcomes = {{"(24, 2)", 0, "24|2", {}}, {"(-1, 0)", 0, "-1|0", {}}},
    .call_with_null_outputs = [] { return svc_pvr_get_pvr_state(nullptr, nullptr); },
};

/// Both states are written whatever the rule then makes of the result.
const RemoteCall get_record_state{
    .name = "svc_pvr_get_record_state_by_service_id",
    .call =
        [](std::ostream &outputs) {
            int state = -77;
            int is_timeshift = -78;
            const int returned = svc_pvr_get_record_state_by_service_id(wide_id, &state, &is_timeshift);
            outputs << state << "|" << is_timeshift;
            return returned;
        },
    .untouched = "-77|-78",
    .entry = entry(wide),
    .is_checked = true,
    .request = request("get_record_state_by_service_id", "t", wide_argument),
    .result = Result::is_published,
    .outcomes = {{"(2, 1, 0)", 0, "2|1", {info(" [g_result:0]")}}, {"(4, -1, 1)", -2, "4|-1", {info(" [g_result:1]")}}},
    .call_with_null_outputs = [] { return svc_pvr_get_record_state_by_service_id(wide_id, nullptr, nullptr); },
};

RemoteCall progress(const std::string &name, std::function<int(int *, std::int64_t *, std::int64_t *)> call,
                    const std::string &entry_text, Request asked)
{
    return {
        .name = name,
        .call =
            [call](std::ostream &outputs) {
                int out_result = -77;
                std::int64_t relative = -77;
                std::int64_t absolute = -77;
                const int returned = call(&out_result, &relative, &absolute);
                outputs << out_result << "|" << relative << "|" << absolute;
                return returned;
            },
        .untouched = "-77|-77|-77",
        .entry = entry(entry_text),
        .is_checked = true,
        .request = std::move(asked),
        .result = Result::is_published,
        .outcomes =
            {{"(1, int64 4294967297, int64 -9223372036854775808, 1)", 0, "1|4294967297|-9223372036854775808", {}},
             {"(-2, int64 0, int64 1, 0)", 0, "-2|0|1", {}},
             {"(3, int64 -1, int64 9223372036854775807, -2)", 0, "3|-1|9223372036854775807", {}}},
        .call_with_null_outputs = [call] { return call(nullptr, nullptr, nullptr); },
    };
}

const std::vector<RemoteCall> progresses{
    progress(
        "svc_pvr_get_progress",
        [](int *out_result, std::int64_t *relative, std::int64_t *absolute) {
            return svc_pvr_get_progress(7, out_result, relative, absolute);
        },
        "[handle:7]", request("get_progress", "i", "(7,)")),
    progress(
        "svc_pvr_get_progress_by_service_id",
        [](int *out_result, std::int64_t *relative, std::int64_t *absolute) {
            return svc_pvr_get_progress_by_service_id(wide_id, out_result, relative, absolute);
        },
        wide, request("get_progress_by_service_id", "t", wide_argument)),
};

/// The value is written whatever the rule then makes of the result.
const RemoteCall get_share_data{
    .name = "svc_pvr_get_share_data",
    .call =
        [](std::ostream &outputs) {
            std::int64_t value = -77;
            const int returned = svc_pvr_get_share_data(-3, &value);
            outputs << value;
            return returned;
        },
    .untouched = "-77",
    .entry = entry("[share_data_type:-3]"),
    .is_checked = true,
    .request = request("get_share_data", "i", "(-3,)"),
    .result = Result::is_published,
    .outcomes = {{"(int64 -9223372036854775808, 1)", 0, "-9223372036854775808", {info(" [g_result:1]")}},
                 {"(int64 5, 0)", -2, "5", {info(" [g_result:0]")}},
                 {"(int64 1, -2)", -2, "1", {info(" [g_result:-2]")}}},
    .call_with_null_outputs = [] { return svc_pvr_get_share_data(-3, nullptr); },
};

RemoteCall is_support_pvr(const std::string &variant, std::vector<Outcome> outcomes)
{
    return {
        .name = "svc_pvr_is_support_pvr",
        .call =
            [](std::ostream &outputs) {
                int supported = -77;
                const int returned = svc_pvr_is_support_pvr(&supported);
                outputs << supported;
                return returned;
            },
        .untouched = "-77",
        .entry = entry(""),
        .is_checked = false,
        .request = request("is_support_pvr", "", "()"),
        .result = Result::is_the_answer,
        .outcomes = std::move(outcomes),
        .call_with_null_outputs = [] { return svc_pvr_is_support_pvr(nullptr); },
        .variant = variant,
    };
}

const Outcome refused{"(0,)", PS_FACTORY_ERROR, "0", {plain_entry("[PS_FACTORY_ERROR]")}};

} // namespace

std::vector<RemoteCall> status_calls()
{
    return joined({rows,
                   progresses,
                   {get_pvr_state, get_record_state, get_share_data,
                    // One program asks only once it has been told, so each answer has a program of its own.
                    is_support_pvr("Yes", {refused, refused, {"(1,)", 0, "1", {plain_info("[result:1]")}}}),
                    is_support_pvr("Two", {refused, {"(2,)", 0, "0", {plain_info("[result:0]")}}}),
                    is_support_pvr("Negative", {{"(-1,)", 0, "0", {plain_info("[result:0]")}}})}});
}
