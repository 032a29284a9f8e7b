// What storms call: calls of several shapes, each of which looks at what it gets.
#pragma once

#include "pvr_service_api.h"
#include "support/scripted_service.h"

#include <string>

namespace support {

inline constexpr int wrong_answer = 99; ///< what a call returned whose outputs are not what the service has answered

inline void script_storm_calls(ScriptedService &service)
{
    service.script("play_start", answers("(1,)"));
    service.script("get_playback_uri_by_handle", answers("('/m/a.srf',)"));
    service.script("get_handle_for_record", answers("(@ai [1, 2, 3], 3)"));
    service.script("sync_stop_pvr", answers("(1,)"));
}

inline constexpr int (*storm_calls[])() = {
    [] { return svc_pvr_play_start(1, "/m/a.srf", 0); },
    [] {
        char uri[255] = "";
        const int returned = svc_pvr_get_playback_uri_by_handle(1, uri);
        return returned == PS_SUCCESS && std::string(uri) != "/m/a.srf" ? wrong_answer : returned;
    },
    [] {
        int list[2] = {0, 0};
        int count = 0;
        const int returned = svc_pvr_get_handle_for_record(list, 2, &count);
        return returned == PS_SUCCESS && (count != 3 || list[0] != 1 || list[1] != 2) ? wrong_answer : returned;
    },
    [] {
        const int returned = svc_pvr_stop_pvr_sync(1, "storm");
        // Requests that nobody waits for would queue up without bound.
        return returned == PS_SUCCESS ? svc_pvr_play_start(2, "/m/b.srf", 0) : returned;
    },
};

/// Whether a call may return this while the service or the bus is killed under it.
inline bool is_expected_in_a_storm(int returned)
{
    return returned == PS_SUCCESS || returned == PS_SESSION_READY || returned == PS_CALL_METHOD_FAILED ||
           returned == PS_NO_PROXY;
}

} // namespace support
