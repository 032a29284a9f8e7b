// The two ways of calling play_start that are compared: through the library, and through a proxy
// as GDBus comes, used the way the generated code uses it.
#pragma once

#include "client/owned.h"
#include "placement.h"

namespace bench {

// What every measured call sends.
inline constexpr int handle = 7;
inline constexpr char uri[] = "/mnt/usb1/contents/0a1b2c3d.srf";
inline constexpr int start_position = 0;

/// Calls through the library. True when it succeeded.
bool library_play_start() noexcept;

/// Calls through a proxy, packing and unpacking as the generated code does. True when it succeeded.
bool bare_play_start(GDBusProxy *proxy) noexcept;

/// A proxy made the way the library makes its own; null when there is none.
pvr::OwnedProxy make_bare_proxy() noexcept;

/// The library's session and a bare proxy, side by side on one connection, which is kept throughout.
class Callers {
public:
    Callers();
    ~Callers();
    Callers(const Callers &) = delete;
    Callers &operator=(const Callers &) = delete;

    /// Places the client, sees to it that there are a session and a proxy, and warms both ways up.
    void prepare(Placement placement);

    /// Leaves neither a session nor a proxy, only the connection.
    void release() noexcept;

    GDBusProxy *bare() const noexcept { return bare_.get(); }

private:
    pvr::OwnedConnection connection_;
    pvr::OwnedProxy bare_;
};

/// Runs what released proxies left in the default main context, which nobody else runs.
void drain_main_context() noexcept;

} // namespace bench
