// pvrctl status: whether the service can be used, and what it does.
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <pvr_service_api.h>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "playback.h"
#include "recordings.h"
#include "states.h"

namespace pvrctl {
namespace {

struct Report {
    Json data = Json::object();
    std::vector<Row> rows;

    void add(const char *name, Json value, Row row)
    {
        data[name] = std::move(value);
        rows.push_back(std::move(row));
    }
};

void ask_about_recordings(const Service &service, Report &report)
{
    Json recordings = Json::array();
    std::string text;
    for (const Recording &recording : running_recordings(service)) {
        recordings.push_back(recording_json(recording));
        text += (text.empty() ? "" : ", ") + channel_text(recording.service_id) +
                (recording.is_timeshift ? " as a timeshift" : "");
    }
    report.add("recordings", std::move(recordings), {"recordings", text.empty() ? "none" : text});

    std::uint64_t watched = 0;
    service.check(svc_pvr_get_current_livetv_service_id(&watched));
    report.add("watched_channel", watched != 0 ? Json(watched) : Json(),
               {"watched", watched != 0 ? channel_text(watched) : "no channel"});

    int device = 0;
    std::array<char, 255> name{};
    service.check(svc_pvr_get_default_rec_device(&device));
    service.check(svc_pvr_get_default_rec_dev_name(name.data()));
    const bool is_there = name[0] != '\0';
    report.add("default_device", is_there ? Json{{"handle", device}, {"name", name.data()}} : Json(),
               {"records to", is_there ? "device " + std::to_string(device) + ", " + name.data() : "no device"});
}

/// Asks one thing after the other, and throws at the first that forbids to go on.
void ask(Service &service, std::optional<int> handle, Report &report)
{
    try {
        service.find_bus();
    } catch (const Failure &) {
        report.add("bus", false, {"bus", "not reachable"});
        throw;
    }
    report.add("bus", true, {"bus", "reachable"});

    const std::optional<std::string> owner = service.owner();
    report.add("service", owner ? Json(*owner) : Json(), {"service", owner ? "running, as " + *owner : "not running"});

    int is_supported = 0;
    try {
        service.open();
    } catch (const Failure &failure) {
        if (failure.code() == ExitCode::not_recording)
            report.add("records", false, {"records", "no, the product does not"});
        throw;
    }
    if (const int result = svc_pvr_is_support_pvr(&is_supported); result != PS_FACTORY_ERROR)
        service.check(result);
    report.add("records", is_supported == 1, {"records", is_supported == 1 ? "yes" : "no, the service says"});
    if (is_supported != 1)
        throw Failure(ExitCode::not_recording, "the Recording service says that it does not record");

    int play_state = 0;
    int record_state = 0;
    service.check(svc_pvr_get_pvr_state(&play_state, &record_state));
    report.add("play_state", play_state_json(play_state), {"play state", play_state_text(play_state)});
    report.add("record_state", record_state_json(record_state), {"record state", record_state_text(record_state)});

    ask_about_recordings(service, report);

    if (!handle)
        return;
    const Playback playback = playback_of(service, *handle);
    report.data["playback"] = playback_json(playback);
    for (Row &row : playback_rows(playback))
        report.rows.push_back(std::move(row));
}

void show_status(Service &service, Output &output, std::optional<int> handle)
{
    Report report;
    try {
        ask(service, handle, report);
    } catch (const Failure &) {
        output.show(report.data, report.rows); // as far as it is known
        throw;
    }
    output.show(report.data, report.rows);
}

} // namespace

void add_status(Commands &commands)
{
    CLI::App &verb = add_command(commands.root, "status", "Tell whether the service runs and records, and what it does",
                                 {"status", "status 3", "status --json"});
    const auto handle = std::make_shared<int>();
    const CLI::Option *given =
        completes(add_number(verb, "HANDLE", *handle, "", "tell what this handle plays, too"), Completes::playback);
    choose(commands, verb, [handle, given](Service &service, Output &output) {
        show_status(service, output, given->count() > 0 ? std::optional(*handle) : std::nullopt);
    });
}

} // namespace pvrctl
