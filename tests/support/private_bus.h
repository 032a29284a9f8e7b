// A real dbus-daemon of the test process's own, in place of the system bus.
#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>

namespace support {

/// Starts at construction and ends with the object, or with the process however that ends.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    /// The address of the bus, the same before and after a restart.
    const std::string &address() const { return address_; }
    const std::filesystem::path &folder() const { return folder_; }

    void start();
    void kill();

private:
    std::filesystem::path folder_;
    std::string address_;
    pid_t pid_ = -1;
};

/// The bus that stands in for the system bus of this process.
PrivateBus &bus();

} // namespace support
