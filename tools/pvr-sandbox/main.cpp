// pvr-sandbox: runs a command with a private bus and a Recording service of its own.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <map>
#include <memory>
#include <string>
#include <unistd.h>

#include "environment.h"
#include "front.h"
#include "messages.h"
#include "options.h"
#include "signals.h"

namespace {

using sandbox::OnServiceExit;
using sandbox::Options;

constexpr char exit_statuses[] = R"(Exit status:
  that of COMMAND; 128+n when signal n killed it
  125  the sandbox itself failed, or the service ended
  126  COMMAND cannot be executed
  127  COMMAND is not found)";

const std::map<std::string, OnServiceExit> service_exits{
    {"stop", OnServiceExit::stop}, {"keep", OnServiceExit::keep}, {"restart", OnServiceExit::restart}};

class Usage : public CLI::Formatter {
    std::string make_usage(const CLI::App * /*app*/, std::string name) const override
    {
        return "Usage: " + name + " [OPTIONS] [-- COMMAND [ARGS...]]\n";
    }
};

/// A descriptor that the sandbox opens must not become standard input, output or error when the user has
/// closed one of these. The command finds them closed.
void occupy_standard_descriptors()
{
    for (;;) {
        const int fd = open("/dev/null", O_RDWR | O_CLOEXEC);
        if (fd < 0 || fd > STDERR_FILENO) {
            if (fd >= 0)
                close(fd);
            return;
        }
    }
}

std::string users_shell()
{
    const char *shell = std::getenv("SHELL");
    return shell != nullptr && *shell != '\0' ? shell : "/bin/sh";
}

/// What is behind the first "--" is the command's, whatever it looks like.
int parse(int argc, char **argv, Options &options)
{
    CLI::App app{"Runs COMMAND, or your shell, with a private system bus and a Recording service on it.\n"
                 "Everything is ended and removed when COMMAND ends.",
                 "pvr-sandbox"};
    app.formatter(std::make_shared<Usage>());
    app.footer(exit_statuses);
    app.set_version_flag("--version", "pvr-sandbox " PVR_VERSION);

    const CLI::Validator not_empty(
        [](const std::string &text) { return text.empty() ? std::string("may not be empty") : std::string(); }, "");
    std::string on_service_exit = "stop";
    int wait = static_cast<int>(options.wait.count());
    auto *service = app.add_option("--service", options.service,
                                   "the Recording service; default: pvr-simulator beside this program")
                        ->check(not_empty)
                        ->type_name("PROGRAM");
    auto *service_option = app.add_option("--service-option", options.service_options,
                                          "handed to the service; may be repeated: --service-option=--quiet")
                               ->allow_extra_args(false)
                               ->type_name("TEXT");
    bool no_service = false;
    app.add_flag("--no-service", no_service, "start the bus only")->excludes(service)->excludes(service_option);
    app.add_option("--on-service-exit", on_service_exit,
                   "what happens when the service ends before COMMAND: stop, keep going, or restart it")
        ->check(CLI::IsMember({"stop", "keep", "restart"}))
        ->type_name("WHAT")
        ->capture_default_str();
    app.add_option("--folder", options.folder, "use this folder, made if missing, instead of a temporary one")
        ->check(not_empty)
        ->type_name("DIR");
    app.add_flag("--keep", options.keeps_folder, "leave the folder behind, and say where it is");
    app.add_option("--service-log", options.service_log,
                   "where the service's output goes; default: service.log in the folder; - is standard error")
        ->check(not_empty)
        ->type_name("FILE");
    app.add_option("--wait", wait, "how long the service may take to own its name")
        ->check(CLI::Range(1, 3600))
        ->type_name("SECONDS")
        ->capture_default_str();
    app.add_flag("--verbose", options.is_verbose, "say what is started and ended");

    char **const end = argv + argc;
    char **const dashes = std::find_if(argv + 1, end, [](const char *word) { return std::strcmp(word, "--") == 0; });
    try {
        app.parse(static_cast<int>(dashes - argv), argv);
    } catch (const CLI::Success &wanted) {
        return app.exit(wanted);
    } catch (const CLI::ExtrasError &error) {
        sandbox::say(std::string(error.what()) + "; a command goes behind --; see --help");
        return sandbox::own_failure;
    } catch (const CLI::Error &error) {
        sandbox::say(std::string(error.what()) + "; see --help");
        return sandbox::own_failure;
    }
    options.has_service = !no_service;
    options.wait = std::chrono::seconds(wait);
    options.on_service_exit = service_exits.at(on_service_exit);
    if (options.service.empty())
        options.service = sandbox::program_folder() + "/pvr-simulator";
    if (dashes != end)
        options.command.assign(dashes + 1, end);
    if (options.command.empty())
        options.command = {users_shell()};
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const sandbox::InheritedSignals signals;
    occupy_standard_descriptors();
    try {
        Options options;
        if (const int status = parse(argc, argv, options); status != 0 || options.command.empty())
            return status;
        return sandbox::run_sandbox(options, signals);
    } catch (const std::exception &error) {
        sandbox::say(error.what());
        return sandbox::own_failure;
    }
}
