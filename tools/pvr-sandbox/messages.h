// What the sandbox says, and how it fails.
#pragma once

#include <cerrno>
#include <stdexcept>
#include <string>

namespace sandbox {

/// The exit status of a sandbox that failed itself; the command's own pass through.
constexpr int own_failure = 125;

/// Ends the sandbox; its text is a sentence for the person who started it.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A failure that the system gives the reason for.
Failure system_failure(const std::string &what, int error = errno);

/// Writes a line to standard error, in one piece. What cannot be written is dropped.
void say(const std::string &text);

/// From now on say() waits for a reader that has stopped reading only until this descriptor is at its end.
void say_only_until_end_of(int fd);

} // namespace sandbox
