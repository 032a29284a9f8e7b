// Where a process of the sandbox writes what it has to say, and its last lines for a message.
#pragma once

#include "fd.h"

#include <string>
#include <sys/types.h>
#include <utility>

namespace sandbox {

class ServiceLog {
public:
    /// The sandbox's own standard error.
    static ServiceLog standard_error();
    /// Appends to a file, which is made if missing.
    static ServiceLog file(const std::string &path);
    /// A new file that is open already.
    ServiceLog(Fd file, std::string path) : fd_(std::move(file)), path_(std::move(path)) {}

    int descriptor() const { return fd_ ? fd_.get() : STDERR_FILENO; }

    /// The newest lines that were written since this log was opened, for the end of a message.
    std::string last_lines() const;

private:
    Fd fd_;
    std::string path_;
    off_t begin_ = 0;
};

} // namespace sandbox
