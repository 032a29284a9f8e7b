// A scenario of the development service, of any content. It is read, and not played.
#include "scenario_file.h"
#include "support/check.h"
#include "support/described_set.h"
#include "support/settings.h"

#include <chrono>

using namespace fuzz;

namespace {

void check_steps(const simulator::Scenario &scenario)
{
    check(!scenario.steps.empty(), "there is a step");
    simulator::Microseconds before{0};
    for (const simulator::ScenarioStep &step : scenario.steps) {
        check(step.at >= before && step.at <= std::chrono::hours(31 * 24), "steps follow one another within a month");
        before = step.at;
        check(step.call.empty() == bool{step.act}, "a step waits for a call, or does something");
        check(step.call.empty() == !step.shown.empty(), "and what it does is told of");
    }
    check(scenario.equipment.standing_since.has_value(), "the set's time stands still");
    const auto start = std::chrono::floor<std::chrono::seconds>(*scenario.equipment.standing_since);
    check(start.count() > 0 && start.count() < 4'102'444'800, "at a moment before 2100");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    simulator::Scenario scenario;
    // As a sandbox does, which has a device where the file has none.
    const auto add_device = [](simulator::Equipment &equipment) {
        if (equipment.devices.empty())
            equipment.devices = {{"usb1", "/nowhere/devices/usb1"}};
    };
    const auto read = [&] { scenario = simulator::read_scenario(settings_path, add_device); };
    if (is_accepted({data, size}, read)) {
        check_equipment(scenario.equipment);
        check_steps(scenario);
    }
    return 0;
}
