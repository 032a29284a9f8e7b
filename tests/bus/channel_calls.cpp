#include "bus/row_shapes.h"
#include "pvr_service_api.h"
#include "support/little_endian.h"

#include <ostream>
#include <string>
#include <vector>

using namespace support;
using Result = RemoteCall::Result;

namespace {

const std::string wide = "[service_id:" + wide_id_text + "]";
const std::string wide_argument = "(uint64 " + wide_id_text + ",)";

std::ostream &operator<<(std::ostream &out, const channel_info &info)
{
    return out << as_little_endian(info.major) << "|" << as_little_endian(info.minor) << "|"
               << as_little_endian(info.start_time) << "|" << as_little_endian(info.end_time) << "|"
               << text_of(info.channel_name, sizeof info.channel_name) << "|"
               << text_of(info.program_title, sizeof info.program_title);
}

/// The lines of the first fields that could be read.
Lines channel_lines(std::size_t count, const std::string &name = "Eins", const std::string &title = "News ä")
{
    const Lines all{
        plain_info("major [5]"),
        plain_info("minor [-1]"),
        plain_info("start time [" + std::to_string(static_cast<long>(4294967295U)) + "]"), // as the machine's long
        plain_info("end time [7]"),
        plain_info("channel name [" + name + "]"),
        plain_info("program title [" + title + "]")};
    return {all.begin(), all.begin() + static_cast<Lines::difference_type>(count)};
}

/// Whatever the service's result.
Outcome channel_outcome(const std::string &elements, const std::string &stored, Lines lines)
{
    return {"(@a(v) [" + elements + "], -3)", 0, stored, std::move(lines)};
}

const std::string long_name(300, 'c');

const RemoteCall get_channel_info{
    .name = "svc_pvr_get_channel_info",
    .call =
        [](std::ostream &outputs) {
            channel_info info{};
            const int returned = svc_pvr_get_channel_info(wide_id, &info);
            outputs << info;
            return returned;
        },
    .untouched = "0|0|0|0||",
    .entry = entry("[service_id:18364758544493064720]"),
    .is_checked = true,
    .request = request("get_channel_info", "t", "(uint64 18364758544493064720,)"),
    .result = Result::is_published,
    .outcomes =
        {
            channel_outcome("(<5>,), (<-1>,), (<uint32 4294967295>,), (<uint32 7>,), (<'Eins'>,), (<'News ä'>,)",
                            "5|-1|4294967295|7|Eins|News ä", channel_lines(6)),
            channel_outcome(
                "(<5>,), (<-1>,), (<uint32 4294967295>,), (<uint32 7>,), (<'Eins'>,), (<'News ä'>,), (<1>,)",
                "5|-1|4294967295|7|Eins|News ä", channel_lines(6)),
            channel_outcome("(<5>,), (<-1>,), (<uint32 4294967295>,), (<uint32 7>,), (<'" + long_name + "'>,), (<'" +
                                long_name + "'>,)",
                            "5|-1|4294967295|7|" + long_name.substr(0, 254) + "|" + long_name.substr(0, 254),
                            channel_lines(6, long_name, long_name)),
            channel_outcome("", "0|0|0|0||", {}),
            channel_outcome("(<5>,)", "5|0|0|0||", channel_lines(1)),
            channel_outcome("(<'5'>,), (<-1>,)", "0|0|0|0||", {}),
            channel_outcome("(<5>,), (<int64 1>,), (<uint32 1>,)", "5|0|0|0||", channel_lines(1)),
            channel_outcome("(<5>,), (<-1>,), (<4>,)", "5|-1|0|0||", channel_lines(2)),
            channel_outcome("(<5>,), (<-1>,), (<uint32 4294967295>,), (<byte 7>,)", "5|-1|4294967295|0||",
                            channel_lines(3)),
            channel_outcome("(<5>,), (<-1>,), (<uint32 4294967295>,), (<uint32 7>,), (<b'Eins'>,), (<'x'>,)",
                            "5|-1|4294967295|7||", channel_lines(4)),
            channel_outcome("(<5>,), (<-1>,), (<uint32 4294967295>,), (<uint32 7>,), (<'Eins'>,), (<<'x'>>,)",
                            "5|-1|4294967295|7|Eins|", channel_lines(5)),
        },
    .call_with_null_outputs = {}, // null is refused: see records_test.cpp
};

/// The queries of a channel's kind, which say only that they are done.
RemoteCall kind(const std::string &method, int (*call)(std::uint64_t, int *))
{
    return number("svc_pvr_" + method, [call](int *out) { return call(wide_id, out); }, wide,
                  request(method, "t", wide_argument), Beside::nothing, {info(" svc_pvr_" + method + " done")});
}

// clang-format off
const std::vector<RemoteCall> rows{
    kind("is_no_signal_channel", svc_pvr_is_no_signal_channel),
    kind("is_audio_only_channel", svc_pvr_is_audio_only_channel),
    kind("is_child_lock_channel", svc_pvr_is_child_lock_channel),
    kind("is_analog_channel", svc_pvr_is_analog_channel),
    number("svc_pvr_is_all_descrambled", svc_pvr_is_all_descrambled, "", request("is_all_descrambled", "", "()")),
    number("svc_pvr_get_av_status", [](int *out) { return svc_pvr_get_av_status(wide_id, out); },
           wide, request("get_av_status", "t", wide_argument), Beside::nothing, {info("[av_status:%]")}),
    number("svc_pvr_is_date_set", svc_pvr_is_date_set, "", request("is_date_set", "", "()"), Beside::nothing,
           {info(" svc_pvr_is_date_set done")}),
    service_id("svc_pvr_get_current_service_id", svc_pvr_get_current_service_id, request("get_current_service_id", "", "()")),
    service_id("svc_pvr_get_current_livetv_service_id", svc_pvr_get_current_livetv_service_id,
               request("get_current_livetv_service_id", "", "()")),
    control("svc_pvr_set_channel_multilanguage_string", [] { return svc_pvr_set_channel_multilanguage_string("ä%s", -1); },
            "[data:ä%s][length:-1]", request("set_channel_multilanguage_string", "si", "('ä%s', -1)")),
    control("svc_pvr_set_channel_number_string", [] { return svc_pvr_set_channel_number_string(7, "7-1"); },
            "[handle:7][channel_number_name:7-1]", request("set_channel_number_string", "is", "(7, '7-1')"), Rule::zero),
};
// clang-format on

} // namespace

std::vector<RemoteCall> channel_calls() { return joined({rows, {get_channel_info}}); }
