// pvrctl: the command line tool of the Recording service. Reads the command line and runs what it names.
#include <algorithm>
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <span>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

#include "command.h"
#include "output.h"
#include "service.h"
#include "wait.h"

namespace pvrctl {
namespace {

/// A standard stream that is closed would be the number of the next thing that is opened, such as the
/// connection to the bus. What takes its place cannot be read or written: its use is an error as before.
void occupy_closed_streams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0)
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

/// The command that the line got as far as.
const CLI::App &deepest(const CLI::App &app)
{
    const std::vector<CLI::App *> chosen = app.get_subcommands();
    return chosen.empty() ? app : deepest(*chosen.front());
}

std::string full_name(const CLI::App &app)
{
    return app.get_parent() == nullptr ? app.get_name() : full_name(*app.get_parent()) + ' ' + app.get_name();
}

Failure usage_failure(const CLI::App &root, const CLI::ParseError &error)
{
    const CLI::App &command = deepest(root);
    const std::vector<std::string> unknown = root.remaining(true);
    const bool is_command_missing = !command.get_subcommands({}).empty();
    std::string message = error.what();
    if (is_command_missing)
        message = unknown.empty() ? "a command is missing" : "'" + unknown.front() + "' is not known here";
    return {ExitCode::usage, message + ". See '" + full_name(command) + " --help'"};
}

/// Parses the line. Prints help or the version when it asks for them, which is no action.
Action chosen_action(Commands &commands, const Output &output, int argc, char **argv)
{
    try {
        commands.root.parse(argc, argv);
    } catch (const CLI::CallForVersion &version) {
        output.print(std::string(version.what()) + '\n');
        return {};
    } catch (const CLI::Success &) {
        output.print(commands.root.help());
        return {};
    } catch (const CLI::ParseError &error) {
        throw usage_failure(commands.root, error);
    }
    return commands.chosen;
}

/// The way of a new user, at the head of what the help ends with.
constexpr char first_steps[] = "First steps, in the order of a recording's life (pvr-sandbox brings a service):\n"
                               "  pvrctl record start 1 --duration 60 --follow   record channel 1, and watch it\n"
                               "  pvrctl monitor                                 watch all that happens\n"
                               "  pvrctl play start RECORDING                    play what it has recorded\n"
                               "  pvrctl inf show RECORDING                      inspect it\n"
                               "  pvrctl file delete RECORDING                   delete it\n\n";

ExitCode run(Output &output, int argc, char **argv)
{
    CLI::App root("The command line tool of the Recording service.", "pvrctl");
    Commands commands{root, {}};
    bool is_json = false; // seen in main already
    bool is_quiet = false;
    root.formatter(help_formatter());
    root.set_help_flag("-h,--help", "explain a command, and end");
    root.set_version_flag("--version", "pvrctl " PVRCTL_VERSION, "print the version, and end");
    CLI::Option *json = root.add_flag("--json", is_json, "print one JSON object; errors are JSON, too");
    CLI::Option *quiet = root.add_flag("--quiet", is_quiet, "print nothing but errors")->excludes(json);
    for (CLI::Option *option : {json, quiet})
        option->group(common_options)->disable_flag_override();
    root.footer(first_steps +
                help_footer({"status", "play start first.srf", "record start 1 --duration 60", "status --json"}));
    root.require_subcommand(1);
    root.fallthrough();
    add_play(commands);
    add_record(commands);
    add_timeshift(commands);
    add_handle(commands);
    add_device(commands);
    add_channel(commands);
    add_share(commands);
    add_file(commands);
    add_inf(commands);
    add_sas(commands);
    add_thumb(commands);
    add_rights(commands);
    add_error_text(commands);
    add_status(commands);
    add_monitor(commands);
    add_wait(commands);
    add_call(commands);
    add_doctor(commands);
    add_complete(commands);
    add_sim(commands);

    const Action action = chosen_action(commands, output, argc, argv);
    if (is_quiet)
        output.set_form(Output::Form::nothing);
    if (action) {
        Service service;
        action(service, output);
    }
    return ExitCode::done;
}

} // namespace
} // namespace pvrctl

int main(int argc, char **argv)
{
    using namespace pvrctl;
    std::signal(SIGPIPE, SIG_IGN); // a reader that has gone is an error like any other
    occupy_closed_streams();

    Output output;
    // What is wrong with the line is told in the form it asks for, so this is seen before the line is parsed.
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    const auto options_end = std::ranges::find(arguments, std::string_view("--"));
    const auto is_json = [](std::string_view word) { return word == "--json" || word.starts_with("--json="); };
    if (std::any_of(arguments.begin(), options_end, is_json))
        output.set_form(Output::Form::json);

    ExitCode code = ExitCode::failed;
    try {
        code = run(output, argc, argv);
    } catch (const Interrupted &interrupted) {
        return interrupted.exit_code();
    } catch (const Failure &failure) {
        code = failure.code();
        output.report(failure);
    } catch (const std::exception &error) {
        output.report({ExitCode::failed, error.what()});
    }
    return static_cast<int>(code);
}
