#include "command_line.h"

#include <string>
#include <vector>

namespace pvrctl {
namespace {

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

/// The way of a new user, at the head of what the help ends with.
constexpr char first_steps[] = "First steps, in the order of a recording's life (pvr-sandbox brings a service):\n"
                               "  pvrctl record start 1 --duration 60 --follow   record channel 1, and watch it\n"
                               "  pvrctl monitor                                 watch all that happens\n"
                               "  pvrctl play start RECORDING                    play what it has recorded\n"
                               "  pvrctl inf show RECORDING                      inspect it\n"
                               "  pvrctl file delete RECORDING                   delete it\n\n";

} // namespace

CommandLine::CommandLine() : root_("The command line tool of the Recording service.", "pvrctl"), commands_{root_, {}}
{
    root_.formatter(help_formatter());
    root_.set_help_flag("-h,--help", "explain a command, and end");
    root_.set_version_flag("--version", "pvrctl " PVRCTL_VERSION, "print the version, and end");
    CLI::Option *json = root_.add_flag("--json", is_json_, "print one JSON object; errors are JSON, too");
    CLI::Option *quiet = root_.add_flag("--quiet", is_quiet_, "print nothing but errors")->excludes(json);
    for (CLI::Option *option : {json, quiet})
        option->group(common_options)->disable_flag_override();
    root_.footer(first_steps +
                 help_footer({"status", "play start first.srf", "record start 1 --duration 60", "status --json"}));
    root_.require_subcommand(1);
    root_.fallthrough();
    add_play(commands_);
    add_record(commands_);
    add_timeshift(commands_);
    add_handle(commands_);
    add_device(commands_);
    add_channel(commands_);
    add_share(commands_);
    add_file(commands_);
    add_inf(commands_);
    add_sas(commands_);
    add_thumb(commands_);
    add_rights(commands_);
    add_error_text(commands_);
    add_status(commands_);
    add_monitor(commands_);
    add_wait(commands_);
    add_call(commands_);
    add_doctor(commands_);
    add_complete(commands_);
    add_sim(commands_);
}

Action CommandLine::action(Output &output, int argc, char **argv)
{
    try {
        root_.parse(argc, argv);
    } catch (const CLI::CallForVersion &version) {
        output.print(std::string(version.what()) + '\n');
        return {};
    } catch (const CLI::Success &) {
        output.print(root_.help());
        return {};
    } catch (const CLI::ParseError &error) {
        throw usage_failure(root_, error);
    }
    if (is_quiet_)
        output.set_form(Output::Form::nothing);
    return commands_.chosen;
}

} // namespace pvrctl
