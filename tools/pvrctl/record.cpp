// pvrctl record: what is being recorded, how long it will last, and its end. Its start is in record_start.cpp.
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <pvr_service_api.h>
#include <string>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "recordings.h"
#include "states.h"

namespace pvrctl {
namespace {

// ---- stop

void stop_recording(Service &service, Output &output, std::uint64_t service_id)
{
    service.open();
    if (!is_recorded(service, service_id))
        throw not_recorded(service_id);
    const std::string uri = recording_uri(service, service_id);
    const std::int64_t seconds = progress_of(service, service_id);
    const int result = svc_pvr_stop_reocrding_sync(service_id, application);
    service.check_delivered(result);
    if (result != PS_SUCCESS)
        throw Failure(ExitCode::refused, "the service did not stop recording " + channel_text(service_id));
    output.show(
        {{"service_id", service_id}, {"uri", uri}, {"seconds", seconds}, {"stopped", true}},
        {{"channel", std::to_string(service_id)}, {"stopped", uri}, {"recorded", std::to_string(seconds) + " s"}});
}

// ---- list and info

void list_recordings(Service &service, Output &output)
{
    service.open();
    Json recordings = Json::array();
    std::vector<Row> rows;
    for (const Recording &recording : running_recordings(service)) {
        recordings.push_back(recording_json(recording));
        rows.push_back({std::to_string(recording.service_id), recording_text(recording)});
    }
    if (rows.empty())
        rows.push_back({"recordings", "none"});
    const std::size_t count = recordings.size();
    output.show({{"recordings", std::move(recordings)}, {"count", count}}, rows);
}

/// What only the handle tells.
void add_details(const Service &service, int handle, Json &data, std::vector<Row> &rows)
{
    std::array<char, 255> uri{};
    pvr_recording_info info{};
    service.check(svc_pvr_get_inf_uri(handle, uri.data()));
    service.check(svc_pvr_get_recording_info(handle, &info));
    const std::uint32_t low_word = info.low_word;
    const std::uint32_t high_word = info.high_word;
    const std::array<int, 3> numbers{info.opaque_8, info.opaque_12, info.opaque_16};
    data["inf_uri"] = uri.data();
    data["recording_info"] = {{"low_word", low_word},
                              {"high_word", high_word},
                              {"opaque_8", numbers[0]},
                              {"opaque_12", numbers[1]},
                              {"opaque_16", numbers[2]}};
    rows.push_back({"info file", uri.data()});
    std::string text = std::to_string(low_word) + ", " + std::to_string(high_word);
    for (const int number : numbers)
        text += ", " + std::to_string(number);
    rows.push_back({"recording info", text});
}

void show_recording(Service &service, Output &output, std::uint64_t service_id)
{
    service.open();
    const std::optional<Recording> recording = recording_of(service, service_id);
    if (!recording)
        throw not_recorded(service_id);
    const std::optional<int> handle = handle_of(service, recording->uri);
    const int duration = duration_of(service, service_id);

    Json data = recording_json(*recording);
    data["handle"] = handle ? Json(*handle) : Json();
    data["duration"] = duration;
    std::vector<Row> rows{{"channel", std::to_string(service_id)},
                          {"handle", handle ? std::to_string(*handle) : "none"},
                          {"kind", record_type_text(recording->type)},
                          {"state", record_state_text(recording->state)},
                          {"recorded", std::to_string(recording->seconds) + " s"},
                          {"duration", duration_text(duration)},
                          {"recording", recording->uri}};
    if (handle)
        add_details(service, *handle, data, rows);
    output.show(data, rows);
}

// ---- duration

struct Duration {
    std::uint64_t service_id = 0;
    int seconds = 0;
    bool is_unlimited = false;
};

void lift_limit(const Service &service, std::uint64_t service_id, const std::string &uri)
{
    const std::optional<int> handle = handle_of(service, uri);
    if (!handle)
        throw not_recorded(service_id);
    const int result = svc_pvr_change_recording_duration_unlimited(*handle);
    service.check_delivered(result);
    if (result != PS_SUCCESS)
        throw Failure(ExitCode::refused,
                      "the service does not record " + channel_text(service_id) + " until it is stopped");
}

void change_duration(Service &service, Output &output, const Duration &wanted, bool has_seconds)
{
    service.open();
    const std::string uri = recording_uri(service, wanted.service_id);
    if (uri.empty())
        throw not_recorded(wanted.service_id);
    if (has_seconds)
        set_duration(service, wanted.service_id, wanted.seconds);
    else if (wanted.is_unlimited)
        lift_limit(service, wanted.service_id, uri);
    const int duration = duration_of(service, wanted.service_id);
    output.show({{"service_id", wanted.service_id}, {"duration", duration}},
                {{"channel", std::to_string(wanted.service_id)}, {"duration", duration_text(duration)}});
}

void add_duration(Commands &commands, CLI::App &object)
{
    CLI::App &verb = add_command(object, "duration", "Tell or set how long a recording lasts, from its start",
                                 {"record duration 1", "record duration 1 3600", "record duration 1 --unlimited"});
    const auto wanted = std::make_shared<Duration>();
    completes(add_channel_argument(verb, wanted->service_id), Completes::recorded);
    CLI::Option *seconds =
        add_number(verb, "SECONDS", wanted->seconds, "", "from its start; without it nothing is set");
    verb.add_flag("--unlimited", wanted->is_unlimited, "until it is stopped")->excludes(seconds);
    choose(commands, verb, [wanted, seconds](Service &service, Output &output) {
        change_duration(service, output, *wanted, seconds->count() > 0);
    });
}

constexpr std::array record_verbs{
    ChannelVerb{"stop", "Stop recording a channel", "record stop 1", stop_recording, Completes::recorded},
    ChannelVerb{"info", "Tell everything about one of the recordings and timeshifts that run", "record info 1",
                show_recording, Completes::recorded},
};

} // namespace

void add_record(Commands &commands)
{
    CLI::App &object = add_command(commands.root, "record", "Record channels",
                                   {"record start 1 --duration 60", "record list", "record stop 1"});
    object.require_subcommand(1);
    add_record_start(commands, object);
    for (const ChannelVerb &verb : record_verbs)
        add_channel_verb(commands, object, verb);
    CLI::App &list = add_command(object, "list", "List the recordings and timeshifts that run",
                                 {"record list", "record list --json"});
    choose(commands, list, list_recordings);
    add_duration(commands, object);
}

} // namespace pvrctl
