// Scenarios as files.
#pragma once

#include "equipment.h"
#include "scenario.h"

#include <functional>
#include <string>
#include <vector>

namespace simulator {

struct Scenario {
    Equipment equipment;
    std::vector<ScenarioStep> steps;
};

/// Reads a file; overrule changes what its [config] says before the steps are looked at, which name channels and
/// devices. Throws as TomlFile does.
Scenario read_scenario(const std::string &path, const std::function<void(Equipment &)> &overrule);

} // namespace simulator
