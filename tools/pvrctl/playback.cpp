#include "playback.h"

#include <array>
#include <pvr_service_api.h>

#include "states.h"

namespace pvrctl {
namespace {

std::string position(const Playback &playback)
{
    std::string text = std::to_string(playback.relative_second) + " s";
    if (const std::string when = playback.absolute_second > 0 ? local_time(playback.absolute_second) : "";
        !when.empty())
        text += ", recorded " + when;
    return text;
}

} // namespace

Playback playback_of(const Service &service, int handle)
{
    Playback playback;
    playback.handle = handle;
    std::array<char, 255> uri{};
    service.check(svc_pvr_get_playback_uri_by_handle(handle, uri.data()));
    playback.uri = uri.data();
    service.check(svc_pvr_get_progress(handle, &playback.state, &playback.relative_second, &playback.absolute_second));
    return playback;
}

Json playback_json(const Playback &playback)
{
    return {{"handle", playback.handle},
            {"uri", playback.uri},
            {"state", play_state_json(playback.state)},
            {"relative_second", playback.relative_second},
            {"absolute_second", playback.absolute_second}};
}

std::vector<Row> playback_rows(const Playback &playback)
{
    std::vector<Row> rows{{"handle", std::to_string(playback.handle)}};
    if (playback.uri.empty()) {
        rows.push_back({"recording", "none"});
        return rows;
    }
    rows.push_back({"recording", playback.uri});
    rows.push_back({"state", play_state_text(playback.state)});
    rows.push_back({"position", position(playback)});
    return rows;
}

} // namespace pvrctl
