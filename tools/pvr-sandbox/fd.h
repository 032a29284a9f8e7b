// Owns a file descriptor.
#pragma once

#include <unistd.h>
#include <utility>

namespace sandbox {

class Fd {
public:
    Fd() noexcept = default;
    explicit Fd(int fd) noexcept : fd_(fd) {}
    Fd(Fd &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Fd &operator=(Fd &&other) noexcept
    {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Fd() { close(); }

    int get() const noexcept { return fd_; }
    explicit operator bool() const noexcept { return fd_ >= 0; }
    void close() noexcept
    {
        if (fd_ >= 0)
            ::close(std::exchange(fd_, -1));
    }

private:
    int fd_ = -1;
};

} // namespace sandbox
