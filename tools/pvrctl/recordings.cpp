#include "recordings.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <pvr_service_api.h>

#include "listed.h"
#include "states.h"

namespace pvrctl {
namespace {

constexpr int yes = 1;

bool is_so(const Service &service, int (*call)(std::uint64_t service_id, int *result), std::uint64_t service_id)
{
    int answer = 0;
    service.check(call(service_id, &answer));
    return answer == yes;
}

/// The timeshift of a channel that is recorded as well: what is asked by channel is told of the recording.
Recording timeshift_on(const Service &service, int handle, std::uint64_t service_id)
{
    std::array<char, 255> uri{};
    pvr_recording_info info{};
    service.check(svc_pvr_get_recording_uri(handle, uri.data()));
    service.check(svc_pvr_get_recording_info(handle, &info));
    return {service_id, true, info.opaque_8, info.opaque_12, info.opaque_16, uri.data()};
}

} // namespace

std::vector<Recording> running_recordings(const Service &service)
{
    const std::vector<std::uint64_t> channels = listed(service, svc_pvr_get_recording_service_id_list);
    std::vector<Recording> recordings;
    std::vector<int> handles;
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        if (std::find(channels.begin(), channel, *channel) == channel) {
            if (const std::optional<Recording> recording = recording_of(service, *channel))
                recordings.push_back(*recording);
            continue;
        }
        if (handles.empty())
            handles = listed(service, svc_pvr_get_handle_for_record);
        if (handles.size() == channels.size()) // they come in the same order
            recordings.push_back(
                timeshift_on(service, handles[static_cast<std::size_t>(channel - channels.begin())], *channel));
    }
    return recordings;
}

std::optional<Recording> recording_of(const Service &service, std::uint64_t service_id)
{
    Recording recording;
    recording.service_id = service_id;
    recording.uri = recording_uri(service, service_id);
    if (recording.uri.empty())
        return std::nullopt;
    int is_timeshift = 0;
    const int result = svc_pvr_get_record_state_by_service_id(service_id, &recording.state, &is_timeshift);
    service.check_delivered(result);
    if (result != PS_SUCCESS)
        return std::nullopt; // it has ended since
    recording.is_timeshift = is_timeshift == yes;
    service.check(svc_pvr_get_recording_type_by_service_id(service_id, &recording.type));
    recording.seconds = progress_of(service, service_id);
    if (recording_uri(service, service_id) != recording.uri)
        return std::nullopt; // what was told last was about none, or about another
    return recording;
}

std::string recording_uri(const Service &service, std::uint64_t service_id)
{
    std::array<char, 255> uri{};
    service.check(svc_pvr_get_recording_uri_by_service_id(service_id, uri.data()));
    return uri.data();
}

std::optional<int> handle_of(const Service &service, const std::string &uri)
{
    for (const int handle : listed(service, svc_pvr_get_handle_for_record)) {
        std::array<char, 255> its_uri{};
        service.check(svc_pvr_get_recording_uri(handle, its_uri.data()));
        if (its_uri.data() == uri)
            return handle;
    }
    return std::nullopt;
}

bool is_recorded(const Service &service, std::uint64_t service_id)
{
    return is_so(service, svc_pvr_is_recording, service_id);
}

bool is_timeshifted(const Service &service, std::uint64_t service_id)
{
    return is_so(service, svc_pvr_is_timeshifting, service_id);
}

int duration_of(const Service &service, std::uint64_t service_id)
{
    int duration = 0;
    service.check(svc_pvr_get_recording_duration_by_service_id(service_id, &duration));
    return duration;
}

void set_duration(const Service &service, std::uint64_t service_id, int seconds)
{
    service.check(svc_pvr_set_recording_duration_by_service_id(service_id, seconds));
    // One that is over by now has no duration any more.
    if (const int duration = duration_of(service, service_id);
        duration != seconds && !recording_uri(service, service_id).empty())
        throw Failure(ExitCode::refused, "the service does not record " + channel_text(service_id) + " for " +
                                             std::to_string(seconds) + " s; its duration stays " +
                                             duration_text(duration));
}

std::int64_t progress_of(const Service &service, std::uint64_t service_id)
{
    int state = 0;
    std::int64_t seconds = 0;
    std::int64_t now = 0;
    service.check(svc_pvr_get_progress_by_service_id(service_id, &state, &seconds, &now));
    return seconds;
}

Failure start_failure(const Service &service, std::uint64_t service_id, ps_record_type_e type)
{
    const int reason = svc_pvr_precheck_recording_available(service_id, type);
    service.check_delivered(reason);
    const char *what = type == PS_RECORD_TYPE_NORMAL ? "record " : "timeshift ";
    return {ExitCode::refused,
            "the service does not " + (what + channel_text(service_id)) +
                (reason == PS_SUCCESS ? ", and gives no reason" : "; its reason is " + std::to_string(reason))};
}

std::string channel_text(std::uint64_t service_id) { return "channel " + std::to_string(service_id); }

Failure not_recorded(std::uint64_t service_id)
{
    return {ExitCode::not_found, channel_text(service_id) + " is not being recorded"};
}

Json recording_json(const Recording &recording)
{
    return {{"service_id", recording.service_id},
            {"timeshift", recording.is_timeshift},
            {"type", record_type_json(recording.type)},
            {"state", record_state_json(recording.state)},
            {"seconds", recording.seconds},
            {"uri", recording.uri}};
}

std::string recording_text(const Recording &recording)
{
    return record_type_text(recording.type) + ", " + record_state_text(recording.state) + ", " +
           std::to_string(recording.seconds) + " s, " + recording.uri;
}

std::string duration_text(int duration)
{
    return duration == 0 ? "until it is stopped" : std::to_string(duration) + " s";
}

} // namespace pvrctl
