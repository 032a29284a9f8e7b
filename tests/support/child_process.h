// A process that ends with this one, whichever way this one ends.
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace support {

/// Runs a command from construction on; the kernel kills it when the thread that made it ends.
class ChildProcess {
public:
    /// Waits for the first line that the command prints: that it is ready. What it complains of is dropped.
    explicit ChildProcess(const std::vector<std::string> &command);
    ~ChildProcess();
    ChildProcess(ChildProcess &&other) noexcept;
    ChildProcess &operator=(ChildProcess &&other) noexcept;

    const std::string &first_line() const { return first_line_; }

private:
    pid_t pid_ = -1;
    std::string first_line_;
};

} // namespace support
