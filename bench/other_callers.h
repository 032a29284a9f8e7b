// The same call through libraries other than GDBus: what another choice would have cost.
#pragma once

#include <dbus/dbus.h>
#include <systemd/sd-bus.h>

namespace bench {

/// On a connection of its own.
class SdBusCaller {
public:
    SdBusCaller();
    ~SdBusCaller();
    SdBusCaller(const SdBusCaller &) = delete;
    SdBusCaller &operator=(const SdBusCaller &) = delete;

    /// True when it succeeded.
    bool play_start() noexcept;

private:
    sd_bus *bus_ = nullptr;
};

/// On a connection of its own.
class LibdbusCaller {
public:
    LibdbusCaller();
    ~LibdbusCaller();
    LibdbusCaller(const LibdbusCaller &) = delete;
    LibdbusCaller &operator=(const LibdbusCaller &) = delete;

    /// True when it succeeded.
    bool play_start() noexcept;

private:
    DBusConnection *connection_ = nullptr;
};

} // namespace bench
