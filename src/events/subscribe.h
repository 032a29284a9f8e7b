// The handler of the proxy's "g-signal": where the service's news arrives.
#pragma once

#include <gio/gio.h>

namespace pvr {

/// Runs in the main context that the proxy belongs to, without any lock held.
void _signal_subscribe(GDBusProxy *proxy, const char *sender_name, const char *signal_name, GVariant *parameters,
                       void *user_data) noexcept;

} // namespace pvr
