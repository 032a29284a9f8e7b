// Stands in for what a call leaves the process by: the bus, and the file that a call looks for.
#pragma once

namespace bench {

/// While it lives, g_dbus_proxy_call_sync answers (1) at once, whoever in the process calls it.
class BusStub {
public:
    BusStub();
    ~BusStub();
    BusStub(const BusStub &) = delete;
    BusStub &operator=(const BusStub &) = delete;
};

/// While it lives, access finds no file, without asking the kernel.
class AccessStub {
public:
    AccessStub();
    ~AccessStub();
    AccessStub(const AccessStub &) = delete;
    AccessStub &operator=(const AccessStub &) = delete;
};

} // namespace bench
