// How a command ends: the exit codes, and the failure that carries one.
#pragma once

#include <span>
#include <stdexcept>
#include <string>

namespace pvrctl {

enum class ExitCode {
    done = 0,
    failed = 1,
    usage = 2,
    time_out = 3,
    not_running = 4,
    not_recording = 5,
    not_found = 6,
    refused = 7,
};

struct ExitCodeText {
    ExitCode code;
    const char *name; ///< as JSON has it
    const char *meaning;
};

/// Every exit code, by number.
std::span<const ExitCodeText> exit_codes();

/// Ends a command. The message is one for people, without the program's name and without a newline.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string &message) : std::runtime_error(message), code_(code) {}
    ExitCode code() const noexcept { return code_; }

private:
    ExitCode code_;
};

} // namespace pvrctl
