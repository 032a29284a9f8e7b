// A real dbus-daemon of the process's own, in place of the system bus.
#pragma once

#include "support/child_process.h"

#include <optional>
#include <string>

namespace support {

/// Leaves nothing behind on any way out: its configuration is a file in memory, and its socket has no
/// name on disk.
class PrivateBus {
public:
    PrivateBus();

    /// The address of the bus, the same before and after a restart.
    const std::string &address() const { return address_; }

    void start();
    void kill();

private:
    std::string address_;
    std::optional<ChildProcess> daemon_;
};

/// The bus that stands in for the system bus of this process.
PrivateBus &bus();

} // namespace support
