#include "bus/row_shapes.h"
#include "pvr_service_api.h"
#include "support/little_endian.h"

#include <array>
#include <ostream>
#include <vector>

using namespace support;

namespace {

const std::string wide = "[service_id:" + wide_id_text + "]";
const std::string wide_argument = "(uint64 " + wide_id_text + ",)";

RemoteCall prechecked(int record_type, const std::string &printed)
{
    RemoteCall row = returned_number(
        "svc_pvr_precheck_recording_available",
        [record_type] { return svc_pvr_precheck_recording_available(wide_id, record_type); },
        wide + "[record_type:" + printed + "]",
        request("precheck_recording_available", "ti",
                "(uint64 " + wide_id_text + ", " + std::to_string(record_type) + ")"));
    row.variant = "Kind" + std::to_string(record_type + 1);
    return row;
}

// clang-format off
const std::vector<RemoteCall> queries{
    number("svc_pvr_get_current_recording_count", svc_pvr_get_current_recording_count, "",
           request("get_current_recording_count", "", "()")),
    returned_number("svc_pvr_is_ch_change_available_on_recording",
                    [] { return svc_pvr_is_ch_change_available_on_recording(wide_id); },
                    wide, request("is_change_available_on_recording", "t", wide_argument), ", 9",
                    {info(wide + " [result:%] Done")}),
    returned_number("svc_pvr_is_source_change_available_on_recording",
                    [] { return svc_pvr_is_source_change_available_on_recording(-3); },
                    "[source_type:-3]", request("is_source_change_available_on_recording", "i", "(-3,)"), ",",
                    {info(" Method: svc_pvr_is_source_change_available_on_recording is called with "
                          "[source_type:-3 result:%]")}),
    message("svc_pvr_set_change_channel_result", [] { return svc_pvr_set_change_channel_result(-1); },
            "[result:-1]", request("set_change_channel_flag", "t", "(uint64 18446744073709551615,)")),
    message("svc_pvr_inform_third_part_result",
            [] { return svc_pvr_inform_third_part_result(wide_id, 1, 2, 3, -4); },
            wide + "[command:1][error_type:2][record_type:3][uid:-4]",
            request("inform_third_part", "iiiti", "(1, 2, 3, uint64 " + wide_id_text + ", -4)")),
};

const std::vector<RemoteCall> flags{
    control("svc_pvr_set_keep_state_flag", [] { return svc_pvr_set_keep_state_flag(1); },
            "[flag:1]", request("set_keep_state_flag", "i", "(1,)"), Rule::one_is_success),
    control("svc_pvr_set_ts_auto_start_flag", [] { return svc_pvr_set_ts_auto_start_flag(0); },
            "[ts_auto_start_flag:0]", request("set_ts_auto_start_flag", "i", "(0,)"), Rule::zero),
};
// clang-format on

/// The flag is written whatever the rule then makes of the result.
const RemoteCall get_ts_auto_start_flag{
    .name = "svc_pvr_get_ts_auto_start_flag",
    .call =
        [](std::ostream &outputs) {
            int flag = -77;
            const int returned = svc_pvr_get_ts_auto_start_flag(&flag);
            outputs << flag;
            return returned;
        },
    .untouched = "-77",
    .entry = entry(""),
    .is_checked = true,
    .request = request("get_ts_auto_start_flag", "", "()"),
    .result = RemoteCall::Result::is_published,
    .outcomes = {{"(1, 0)", 0, "1", {info(" [g_result:0]")}},
                 {"(0, 1)", -2, "0", {info(" [g_result:1]")}},
                 {"(5, -2)", -2, "5", {info(" [g_result:-2]")}}},
    .call_with_null_outputs = [] { return svc_pvr_get_ts_auto_start_flag(nullptr); },
};

const RemoteCall get_recording_type{
    .name = "svc_pvr_get_recording_type_by_service_id",
    .call =
        [](std::ostream &outputs) {
            int type = -77;
            const int returned = svc_pvr_get_recording_type_by_service_id(wide_id, &type);
            outputs << type;
            return returned;
        },
    .untouched = "-77",
    .entry = entry(wide),
    .is_checked = true,
    .request = request("get_recording_type_by_service_id", "t", wide_argument),
    .result = RemoteCall::Result::is_published,
    .outcomes = {{"(1,)", 0, "1", {}}, {"(-1,)", 0, "-1", {}}, {"(0,)", 0, "0", {}}},
    .call_with_null_outputs = [] { return svc_pvr_get_recording_type_by_service_id(wide_id, nullptr); },
};

/// The only answer whose result stands first: (result, handle).
const RemoteCall pre_channel_change{
    .name = "svc_pvr_pre_channel_change_on_recording",
    .call =
        [](std::ostream &outputs) {
            int result = -77;
            int handle = -78;
            const int returned = svc_pvr_pre_channel_change_on_recording(wide_id, &result, &handle);
            outputs << result << "|" << handle;
            return returned;
        },
    .untouched = "-77|-78",
    .entry = entry(wide),
    .is_checked = true,
    .request = request("is_change_available_on_recording", "t", wide_argument),
    .result = RemoteCall::Result::is_published,
    .outcomes = {{"(1, 1)", 0, "1|1", {info(wide + " [result:1] [iHandle:1] Done")}},
                 {"(-2, -5)", 0, "-2|-5", {info(wide + " [result:-2] [iHandle:-5] Done")}}},
    .call_with_null_outputs = [] { return svc_pvr_pre_channel_change_on_recording(wide_id, nullptr, nullptr); },
};

const RemoteCall get_recording_info{
    .name = "svc_pvr_get_recording_info",
    .call =
        [](std::ostream &outputs) {
            pvr_recording_info info{as_little_endian(77U), 0, 0, 0, 0};
            const int returned = svc_pvr_get_recording_info(7, &info);
            outputs << std::hex << as_little_endian(info.low_word) << "|" << as_little_endian(info.high_word)
                    << std::dec << "|" << as_little_endian(info.opaque_8) << "|" << as_little_endian(info.opaque_12)
                    << "|" << as_little_endian(info.opaque_16);
            return returned;
        },
    .untouched = "4d|0|0|0|0",
    .entry = entry("[dev_handle:7]"),
    .is_checked = true,
    .request = request("get_recording_info", "i", "(7,)"),
    .result = RemoteCall::Result::is_the_answer,
    .outcomes = {{"((uint64 " + wide_id_text + ", 1, -2, 3),)", 0, "76543210|fedcba98|1|-2|3", {}}},
    .call_with_null_outputs = {}, // null is refused: see records_test.cpp
};

} // namespace

std::vector<RemoteCall> recording_state_calls()
{
    return joined(
        {queries,
         flags,
         {get_ts_auto_start_flag, get_recording_type, pre_channel_change, get_recording_info},
         // the kind of recording is printed by name and number
         {prechecked(-1, "PS_RECORD_TYPE_NONE|-1"), prechecked(3, "PS_RECORD_TYPE_TIMER|3"), prechecked(6, "|6")}});
}
