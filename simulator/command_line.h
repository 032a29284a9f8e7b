// What the service is told when it is started: by the command line, and by the file that it names.
#pragma once

#include "equipment.h"
#include "scenario_file.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

class CommandLine {
public:
    /// Adds the options, which stay in this object.
    explicit CommandLine(CLI::App &app);
    CommandLine(const CommandLine &) = delete;
    CommandLine &operator=(const CommandLine &) = delete;

    bool is_quiet() const { return is_quiet_; }
    /// Where events are to be written; "" for nowhere.
    const std::string &event_log() const { return event_log_; }
    /// What the file says, and the options in its place. A sandbox, whose folder this is, has a device of its own
    /// where neither names one. Without a file of a scenario there are no steps. Throws std::invalid_argument, which is
    /// WrongFile for mistakes in the file, and std::filesystem::filesystem_error.
    Scenario scenario(const std::optional<std::string> &sandbox) const;

private:
    void overrule(Equipment &equipment) const;

    bool is_quiet_ = false;
    std::string config_;
    std::string scenario_;
    std::string event_log_;
    std::vector<std::string> devices_;
    std::vector<std::string> slow_devices_;
    std::vector<std::string> sources_;
    std::vector<std::string> bit_rates_;
    std::optional<int> tuners_;
    std::optional<std::int64_t> timeshift_;
    std::optional<double> speed_;
};

} // namespace simulator
