// The same call through libraries other than GDBus, on a connection of its own: what another choice would have cost.
#pragma once

#include <dbus/dbus.h>
#include <memory>
#include <systemd/sd-bus.h>

namespace bench {

void close_connection(DBusConnection *connection);

class SdBusCaller {
public:
    SdBusCaller();
    /// True when it succeeded.
    bool play_start() noexcept;

private:
    std::unique_ptr<sd_bus, decltype(&sd_bus_flush_close_unref)> bus_{nullptr, sd_bus_flush_close_unref};
};

class LibdbusCaller {
public:
    LibdbusCaller();
    /// True when it succeeded.
    bool play_start() noexcept;

private:
    std::unique_ptr<DBusConnection, decltype(&close_connection)> connection_;
};

} // namespace bench
