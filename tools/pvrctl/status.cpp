// pvrctl status: whether the service can be used, and what it does.
#include <memory>
#include <optional>
#include <pvr_service_api.h>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "playback.h"
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
    const CLI::Option *given = add_number(verb, "HANDLE", *handle, "", "tell what this handle plays, too");
    choose(commands, verb, [handle, given](Service &service, Output &output) {
        show_status(service, output, given->count() > 0 ? std::optional(*handle) : std::nullopt);
    });
}

} // namespace pvrctl
