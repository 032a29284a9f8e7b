// A child that ends with its parent, whichever way the parent ends.
#pragma once

#include "signals.h"

#include <array>
#include <string>
#include <sys/types.h>
#include <vector>

namespace sandbox {

struct Launch {
    std::vector<std::string> arguments;
    /// NAME=value. PATH in here is where a program without a slash is looked up.
    std::vector<std::string> environment;
    /// What becomes standard input, output and error; -1 leaves one as it is.
    std::array<int, 3> standard{-1, -1, -1};
    /// The process group to join. Without one the process gets a session of its own, where no key of
    /// the terminal reaches it, and inherits no further descriptor.
    pid_t group = 0;
};

class Process {
public:
    /// Returns once the program is executed. Throws std::system_error when it cannot be.
    Process(const Launch &launch, const InheritedSignals &signals);

    pid_t id() const { return id_; }
    bool has_ended() const { return has_ended_; }

    /// Takes note of what waitpid() said of this process; other processes are skipped.
    void note_end(pid_t process, int status);

    /// Does nothing once the process has ended.
    void send(int signal) const;

    /// As shells give it: the exit status, or 128 and the number of the signal.
    int exit_status() const;
    /// For a message: "exit status 3", "killed by SIGSEGV (Segmentation fault)".
    std::string end() const;

private:
    pid_t id_ = -1;
    bool has_ended_ = false;
    int status_ = 0;
};

/// The same words for any status of waitpid().
std::string end_in_words(int status);

} // namespace sandbox
