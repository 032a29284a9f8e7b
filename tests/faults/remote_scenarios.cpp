// Every remote call, made of the rows that say what it does with each answer.
#include "faults/scenario.h"

#include "bus/remote_call.h"
#include "pvr_service_api.h"

#include <sstream>

namespace faults {
namespace {

std::string outcome(int returned, const std::string &outputs) { return std::to_string(returned) + "; " + outputs; }

Scenario scenario_of(const RemoteCall &row)
{
    const Outcome &answered = row.outcomes.front();
    Scenario scenario{
        .function = row.name,
        .variant = row.variant,
        // What it is told once it keeps.
        .start = row.name == "svc_pvr_is_support_pvr" ? Start::fresh_session : Start::session,
        .prepare = [&row](Stage &stage) { stage.answer(row.request.method, row.outcomes.front().answer); },
        .call =
            [&row](Stage &) {
                std::ostringstream outputs;
                const int returned = row.call(outputs);
                return outcome(returned, outputs.str());
            },
        .good = outcome(answered.returned, answered.outputs),
        .bad = outcome(PS_CALL_METHOD_FAILED, row.untouched),
    };
    scenario.exceptions = {{Kind::access, scenario.good, "the file that overrides the product counts as not there"}};
    return scenario;
}

const std::string no_override = "the file that overrides the product counts as not there";

/// Calls that ask the service more than once, and go on when a later question fails.
std::vector<Scenario> composite_calls()
{
    return {
        {"svc_pvr_get_remaining_time",
         "",
         Start::session,
         [](Stage &stage) {
             stage.answer("get_default_rec_device", "(5, 0)");
             stage.answer("get_device_info", "((1, 0, 'd', 'p', '/m', int64 0, int64 1000), 0)");
         },
         [](Stage &) {
             int remaining = -77;
             const int returned = svc_pvr_get_remaining_time(1, &remaining);
             return outcome(returned, std::to_string(remaining));
         },
         "0; 800",
         "0; 0",
         {{Kind::access, "0; 800", no_override},
          {Kind::request, "0; 800", "the service takes any handle here", "error", 1, Length::once},
          {Kind::request, "0; 800", "the same", "other type", 1, Length::once},
          {Kind::request, "0; 800", "the second call makes a new session", "no bus", 1, Length::once}}},
        {"svc_pvr_get_recording_no_ts_service_id_list",
         "",
         Start::session,
         [](Stage &stage) {
             stage.answer("get_recording_service_id_list", "(@at [1, 2], 2)");
             stage.answer("is_recording", "(1,)");
         },
         [](Stage &) {
             std::uint64_t list[2] = {77, 77};
             int count = -77;
             const int returned = svc_pvr_get_recording_no_ts_service_id_list(list, 2, &count);
             return outcome(returned,
                            std::to_string(count) + "; " + std::to_string(list[0]) + "; " + std::to_string(list[1]));
         },
         "0; 2; 1; 2",
         "-2; -77; 77; 77",
         {{Kind::access, "0; 2; 1; 2", no_override},
          {Kind::request, "0; 0; 77; 77", "what cannot be asked about is no recording, and ends the list", nullptr, 2},
          {Kind::request, "0; 1; 1; 77", "the same", nullptr, 3}}},
    };
}

} // namespace

std::vector<Scenario> remote_scenarios()
{
    std::vector<Scenario> scenarios = composite_calls();
    for (const RemoteCall &row : all_calls())
        scenarios.push_back(scenario_of(row));
    return scenarios;
}

} // namespace faults
