// pvrctl timeshift: start and stop it. The library returns success whatever the service answered, so the effect is
// looked at afterwards.
#include <array>
#include <cstdint>
#include <pvr_service_api.h>
#include <string>

#include "command.h"
#include "recordings.h"
#include "states.h"

namespace pvrctl {
namespace {

constexpr int timeshift_shows_nothing = 0;

void start_timeshift(Service &service, Output &output, std::uint64_t service_id)
{
    service.open();
    if (is_timeshifted(service, service_id))
        throw Failure(ExitCode::refused, channel_text(service_id) + " is being timeshifted already");
    service.check(svc_pvr_start_timeshift(service_id, timeshift_shows_nothing, ""));
    if (!is_timeshifted(service, service_id))
        throw start_failure(service, service_id, PS_RECORD_TYPE_TIMESHIFT_PLAY);
    for (const Recording &recording : running_recordings(service))
        if (recording.service_id == service_id && recording.is_timeshift) {
            output.show(
                {{"service_id", service_id}, {"uri", recording.uri}, {"type", record_type_json(recording.type)}},
                {{"channel", std::to_string(service_id)},
                 {"timeshift", recording.uri},
                 {"kind", record_type_text(recording.type)}});
            return;
        }
    throw Failure(ExitCode::failed, "the timeshift of " + channel_text(service_id) + " has ended at once");
}

void stop_timeshift(Service &service, Output &output, std::uint64_t service_id)
{
    service.open();
    if (!is_timeshifted(service, service_id))
        throw Failure(ExitCode::not_found, channel_text(service_id) + " is not being timeshifted");
    service.check(svc_pvr_stop_timeshift(service_id, timeshift_shows_nothing, ""));
    if (is_timeshifted(service, service_id))
        throw Failure(ExitCode::refused, "the service did not stop the timeshift of " + channel_text(service_id));
    output.show({{"service_id", service_id}, {"stopped", true}},
                {{"channel", std::to_string(service_id)}, {"stopped", "its timeshift"}});
}

constexpr std::array timeshift_verbs{
    ChannelVerb{"start", "Timeshift a channel", "timeshift start 1", start_timeshift},
    ChannelVerb{"stop", "Stop the timeshift of a channel", "timeshift stop 1", stop_timeshift, Completes::recorded},
};

} // namespace

void add_timeshift(Commands &commands)
{
    CLI::App &object = add_command(commands.root, "timeshift", "Timeshift channels: watch them later than they come",
                                   {"timeshift start 1", "timeshift stop 1"});
    object.require_subcommand(1);
    for (const ChannelVerb &verb : timeshift_verbs)
        add_channel_verb(commands, object, verb);
}

} // namespace pvrctl
