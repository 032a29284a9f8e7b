// A program of the build as a test runs it: with what it prints, and how it ends.
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace simulator_test {

/// Killed at the latest when the test ends.
class Program {
public:
    enum class Complaints { are_kept, are_not_read };

    /// Starts a program of the folder of programs, with this process's environment.
    explicit Program(std::vector<std::string> command, Complaints complaints = Complaints::are_kept);
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    /// Waits for the next line on its standard output, without its end; what is left when there is none.
    std::string line();
    pid_t pid() const { return pid_; }
    /// Sends it a signal.
    void signal(int number) const;
    /// Waits for its end: its exit code, or 128 and the number of the signal that ended it.
    int wait();

    /// What it has written to standard error so far; nothing when that is not read.
    std::string complaints() const;
    /// What it still writes to standard output, until its end.
    std::string rest();

private:
    pid_t pid_ = -1;
    int output_ = -1;
    int complaints_ = -1;
};

} // namespace simulator_test
