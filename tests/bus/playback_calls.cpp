#include "bus/row_shapes.h"
#include "pvr_service_api.h"

#include <vector>

using namespace support;

namespace {

// clang-format off
const std::vector<RemoteCall> controls{
    control("svc_pvr_release_handle", [] { return svc_pvr_release_handle(-7); },
            "[handle:-7]", request("release_handle", "i", "(-7,)")),
    control("svc_pvr_play_start", [] { return svc_pvr_play_start(7, "/m/ä %s.srf", -90); },
            " someione[handle:7][uri:/m/ä %s.srf][start_pos:-90]", request("play_start", "isi", "(7, '/m/ä %s.srf', -90)")),
    control("svc_pvr_play_stop", [] { return svc_pvr_play_stop(7); },
            " someione[handle:7]", request("play_stop", "i", "(7,)")),
    control("svc_pvr_play_pause", [] { return svc_pvr_play_pause(7); },
            " someione[handle:7]", request("play_pause", "i", "(7,)")),
    control("svc_pvr_play_resume", [] { return svc_pvr_play_resume(7); },
            " someione[handle:7]", request("play_resume", "i", "(7,)")),
    control("svc_pvr_play_forward", [] { return svc_pvr_play_forward(7, 3); },
            " someione[handle:7][forward_type:3]", request("play_forward", "ii", "(7, 3)")),
    control("svc_pvr_play_rewind", [] { return svc_pvr_play_rewind(7, -3); },
            " someione[handle:7][rewind_type:-3]", request("play_rewind", "ii", "(7, -3)")),
    control("svc_pvr_play_skip", [] { return svc_pvr_play_skip(7, 1, -20, 300); },
            " someione[handle:7][skip_type:1][skip_pos:-20][rate:300]", request("play_skip", "iiii", "(7, 1, -20, 300)")),
    control("svc_pvr_step_frame", [] { return svc_pvr_step_frame(7); },
            " someione[handle:7]", request("step_frame", "i", "(7,)")),
    control("svc_pvr_play_stop_to_dtv", [] { return svc_pvr_play_stop_to_dtv(7); },
            " someione[handle:7]", request("play_stop_to_dtv", "i", "(7,)")),
    control("svc_pvr_play_pause_by_service_id", [] { return svc_pvr_play_pause_by_service_id(wide_id); },
            "[service_id:18364758544493064720]", request("play_pause_by_service_id", "t", "(uint64 18364758544493064720,)")),
    control("svc_pvr_play_resume_by_service_id", [] { return svc_pvr_play_resume_by_service_id(wide_id); },
            "[service_id:18364758544493064720]", request("play_resume_by_service_id", "t", "(uint64 18364758544493064720,)")),
    control("svc_pvr_play_stop_by_uri", [] { return svc_pvr_play_stop_by_uri("/m/%n.srf"); },
            "[uri:/m/%n.srf]", request("play_stop_by_uri", "s", "('/m/%n.srf',)"),
            Rule::transport, {info(" Method: svc_pvr_play_stop_by_uri call finish.")}),
    control("svc_pvr_stop_playing_sync", [] { return svc_pvr_stop_playing_sync("org.example.guide"); },
            "[called_app:org.example.guide]", request("sync_stop_playing", "si", "('org.example.guide', 1)"), Rule::pass_through),
    control("svc_pvr_stop_playing_sync_ex", [] { return svc_pvr_stop_playing_sync_ex("org.example.guide", -4); },
            "[called_app:org.example.guide][set_source:-4]",
            request("sync_stop_playing", "si", "('org.example.guide', -4)"), Rule::pass_through),
    control("svc_pvr_stop_playing_and_recording", [] { return svc_pvr_stop_playing_and_recording(7, -1); },
            "[handle:7][set_source:-1]", request("stop_playing_and_recording", "ii", "(7, -1)")),
};
// clang-format on

// clang-format off
const std::vector<RemoteCall> handles_and_uris{
    number("svc_pvr_get_handle", svc_pvr_get_handle, "", request("get_handle", "", "()"), Beside::result,
           {info(" pvr_get_handle finished with handle: [ % ]")}),
    number("svc_pvr_get_handle_for_playback", svc_pvr_get_handle_for_playback, "",
           request("get_handle_for_playback", "", "()"), Beside::result,
           {info(" svc_pvr_get_handle_for_playback finished with handle: [ % ]")}),
    text("svc_pvr_get_playback_uri_by_handle", [](char *uri) { return svc_pvr_get_playback_uri_by_handle(3, uri); },
         "[handle:3]", request("get_playback_uri_by_handle", "i", "(3,)"), 255, Beside::nothing, {info(" Done")}),
};
// clang-format on

} // namespace

std::vector<RemoteCall> playback_calls() { return joined({controls, handles_and_uris}); }
