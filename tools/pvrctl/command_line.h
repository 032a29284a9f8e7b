// The whole command line: all objects and their verbs, and what a line chooses of them.
#pragma once

#include <CLI/CLI.hpp>

#include "command.h"
#include "output.h"

namespace pvrctl {

/// For one line.
class CommandLine {
public:
    CommandLine();

    /// Reads a line. Prints help or the version when it asks for them, which is no action. Throws a Failure for a line
    /// that makes no sense.
    Action action(Output &output, int argc, char **argv);

private:
    CLI::App root_;
    Commands commands_;
    bool is_json_ = false; // seen in main already
    bool is_quiet_ = false;
};

} // namespace pvrctl
