#include "bus/row_shapes.h"
#include "pvr_service_api.h"

#include <ostream>
#include <vector>

using namespace support;

namespace {

const RemoteCall remove_inf{
    .name = "svc_pvr_remove_inf",
    .call = [](std::ostream &) { return svc_pvr_remove_inf("/m/a.inf", 2); },
    .untouched = "",
    .entry = entry("[file_path:/m/a.inf][mode:2]"),
    .is_checked = true,
    .request = request("remove_inf", "si", "('/m/a.inf', 2)"),
    .result = RemoteCall::Result::is_published,
    .outcomes = {{"(1,)", 0, "", {info(" The inf file removed success!")}},
                 {"(-1,)", 0, "", {info(" The inf file removed success!")}}},
    .call_with_null_outputs = {},
};

// clang-format off
const std::vector<RemoteCall> rows{
    control("svc_pvr_mkdir", [] { return svc_pvr_mkdir("/m/ä %s", 0755); },
            "[path:/m/ä %s][mode:493]", request("mkdir", "si", "('/m/ä %s', 493)"), Rule::sign),
    number("svc_pvr_delete_record_file", [](int *out) { return svc_pvr_delete_record_file("/m/a.srf", out); },
           "[file_path:/m/a.srf]", request("delete_record_file", "s", "('/m/a.srf',)"), Beside::nothing, {info(" [ret:%]")}),
    control("svc_pvr_delete_segment_file", [] { return svc_pvr_delete_segment_file(wide_id); },
            "[service_id:" + wide_id_text + "]", request("delete_segment_record", "t", "(uint64 " + wide_id_text + ",)")),
    number("svc_pvr_is_recording_file", [](int *out) { return svc_pvr_is_recording_file("/m/a.srf", out); },
           "[file_path:/m/a.srf]", request("is_recording_file", "s", "('/m/a.srf',)"), Beside::nothing,
           {info(" Is Recording file [file:/m/a.srf result:%]")}),
    number("svc_pvr_get_system_record_num", svc_pvr_get_system_record_num, "", request("get_system_record_num", "", "()")),
    number("svc_pvr_check_parent_lock", [](int *out) { return svc_pvr_check_parent_lock("/m/a.srf", out); },
           "[file_path:/m/a.srf]", request("check_parent_lock", "s", "('/m/a.srf',)")),
    // the wire takes the height before the width
    control("svc_pvr_make_thumbnail_file", [] { return svc_pvr_make_thumbnail_file("/m/a.srf", -9, 320, 180); },
            "[uri:/m/a.srf][userdata:-9][width:320][height:180]",
            request("make_thumbnail_file", "siii", "('/m/a.srf', -9, 180, 320)")),
    text("svc_pvr_get_inf_uri", [](char *uri) { return svc_pvr_get_inf_uri(7, uri); },
         "[handle:7]", request("get_inf_uri", "i", "(7,)"), 255, Beside::nothing, {info(" svc_pvr_get_inf_uri done")}),
    text("svc_pvr_get_recording_uri", [](char *uri) { return svc_pvr_get_recording_uri(7, uri); },
         "[handle:7]", request("get_recording_uri", "i", "(7,)"), 255, Beside::nothing, {info(" Done")}),
    text("svc_pvr_get_recording_uri_by_service_id",
         [](char *uri) { return svc_pvr_get_recording_uri_by_service_id(wide_id, uri); },
         "[service_id:" + wide_id_text + "]",
         request("get_recording_uri_by_service_id", "t", "(uint64 " + wide_id_text + ",)"), 255, Beside::nothing,
         {info(" svc_pvr_get_current_service_id done")}),
    text("svc_pvr_get_current_recording_uri", svc_pvr_get_current_recording_uri,
         "", request("get_current_recording_uri", "", "()"), 256, Beside::nothing, {info(" get recording uri[%]")}),
};
// clang-format on

} // namespace

std::vector<RemoteCall> recording_files_calls() { return joined({rows, {remove_inf}}); }
