// pvrctl: the command line tool of the Recording service. Reads the command line and runs what it names.
#include <algorithm>
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <span>
#include <string_view>
#include <unistd.h>

#include "command_line.h"
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

ExitCode run(Output &output, int argc, char **argv)
{
    CommandLine line;
    const Action action = line.action(output, argc, argv);
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
