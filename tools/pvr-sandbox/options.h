// What the person who starts a sandbox asks for.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace sandbox {

enum class OnServiceExit { stop, keep, restart };

struct Options {
    /// The Recording service: a path, or a name that is looked up in PATH.
    std::string service;
    std::vector<std::string> service_options;
    bool has_service = true;
    OnServiceExit on_service_exit = OnServiceExit::stop;
    /// How long the service may take to own its name.
    std::chrono::seconds wait{10};

    /// Empty: a temporary folder.
    std::string folder;
    bool keeps_folder = false;
    /// Empty: a file in the folder; "-": standard error.
    std::string service_log;

    bool is_verbose = false;
    std::vector<std::string> command;
};

} // namespace sandbox
