#include "bus/row_shapes.h"
#include "pvr_service_api.h"

#include <climits>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

using namespace support;

namespace {

/// What call_app is sent: command, service id, param2, param3, reminder.
Request app_request(int command, const std::string &service, int param2, const std::string &param3,
                    const std::string &reminder = "0")
{
    return request("call_app", "itisu",
                   "(" + std::to_string(command) + ", uint64 " + service + ", " + std::to_string(param2) + ", '" +
                       param3 + "', uint32 " + reminder + ")");
}

const std::string wide = "[service_id:" + wide_id_text + "]";

// clang-format off
const std::vector<RemoteCall> by_channel{
    control("svc_pvr_start_recording", [] { return svc_pvr_start_recording(wide_id, 1, "ex%s"); },
            wide + "[show:1][extra:ex%s]", app_request(0, wide_id_text, 1, "ex%s")),
    control("svc_pvr_start_recording_ex", [] { return svc_pvr_start_recording_ex(wide_id, -1, "", LONG_MIN + 5); },
            wide + "[show:-1][extra:][reminder:" + std::to_string(LONG_MIN + 5) + "]",
            app_request(0, wide_id_text, -1, "", std::to_string(static_cast<std::uint32_t>(LONG_MIN + 5)))),
    control("svc_pvr_start_timeshift", [] { return svc_pvr_start_timeshift(wide_id, 1, "ä"); },
            wide + "[show:1][extra:ä]", app_request(1, wide_id_text, 1, "ä")),
    control("svc_pvr_stop_recording", [] { return svc_pvr_stop_recording(wide_id, 1, "x"); },
            wide + "[show:1]", app_request(2, wide_id_text, 0, "x")),
    control("svc_pvr_stop_timeshift", [] { return svc_pvr_stop_timeshift(wide_id, 1, "x"); },
            wide + "[show:1]", app_request(3, wide_id_text, 0, "x")),
    control("svc_pvr_set_record_duration", [] { return svc_pvr_set_record_duration(wide_id, -60); },
            wide + "[duration:-60]", app_request(4, wide_id_text, -60, "")),
    control("svc_pvr_stop_timeshift_without_service_id", [] { return svc_pvr_stop_timeshift_without_service_id(1, "x"); },
            "[show:1]", app_request(7, "0", 0, "x")),
    control("svc_pvr_stop_reocrding_sync", [] { return svc_pvr_stop_reocrding_sync(wide_id, "app"); },
            wide + "[called_app:app]", request("sync_stop_recording", "ts", "(uint64 " + wide_id_text + ", 'app')"), Rule::zero),
};

const std::vector<RemoteCall> by_handle{
    message("svc_pvr_record_start", [] { return svc_pvr_record_start(7, wide_id, 3); },
            "[handle:7]" + wide + "[record_type:3]", request("record_start", "iti", "(7, uint64 " + wide_id_text + ", 3)"),
            {info(" Method: pvr_record_start call finish.")}),
    message("svc_pvr_record_stop", [] { return svc_pvr_record_stop(7); },
            "[handle:7]", request("record_stop", "i", "(7,)")),
    message("svc_pvr_switch_to_record", [] { return svc_pvr_switch_to_record(7, -2); },
            "[handle:7][switch_type:-2]", request("switch_to_record", "ii", "(7, -2)")),
    control("svc_pvr_stop_pvr", [] { return svc_pvr_stop_pvr(7); },
            "[handle:7]", request("stop_pvr", "i", "(7,)")),
};

const std::vector<RemoteCall> durations{
    control("svc_pvr_change_recording_duration_unlimited", [] { return svc_pvr_change_recording_duration_unlimited(7); },
            "[handle:7]", request("change_recording_duration_unlimited", "i", "(7,)"), Rule::zero),
    control("svc_pvr_set_recording_duration", [] { return svc_pvr_set_recording_duration(7, 3600); },
            "[handle:7][duration:3600]", request("set_recording_duration", "ii", "(7, 3600)"), Rule::zero),
    number("svc_pvr_get_recording_duration", [](int *out) { return svc_pvr_get_recording_duration(7, out); },
           "[handle:7]", request("get_recording_duration", "i", "(7,)"), Beside::result),
    control("svc_pvr_set_recording_duration_by_service_id",
            [] { return svc_pvr_set_recording_duration_by_service_id(wide_id, -1); },
            wide + "[duration:-1]", request("set_recording_duration_by_service_id", "ti", "(uint64 " + wide_id_text + ", -1)")),
    number("svc_pvr_get_recording_duration_by_service_id",
           [](int *out) { return svc_pvr_get_recording_duration_by_service_id(wide_id, out); },
           wide, request("get_recording_duration_by_service_id", "t", "(uint64 " + wide_id_text + ",)"), Beside::result),
    number("svc_pvr_get_max_recordable_time", svc_pvr_get_max_recordable_time,
           "", request("get_max_recordable_time", "", "()"), Beside::nothing, {info("[time:%]")}),
};
// clang-format on

} // namespace

std::vector<RemoteCall> recording_calls() { return joined({by_channel, by_handle, durations}); }
