// Files that take no more than so many bytes, as on a device that is full.
#pragma once

#include <csignal>
#include <stdexcept>
#include <sys/resource.h>

namespace support {

/// Holds for the whole process as long as it lives: whatever the process writes at its end finds room again.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        set(bytes);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before_); }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

    void set(rlim_t bytes)
    {
        const rlimit limit{bytes, before_.rlim_max};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
            throw std::runtime_error("cannot limit the size of files");
    }

private:
    static rlimit current()
    {
        rlimit limit{};
        getrlimit(RLIMIT_FSIZE, &limit);
        return limit;
    }

    const rlimit before_ = current();
};

} // namespace support
