// The signal send_pvr_signal_to_apps: state changes and notifications.
#pragma once

#include <gio/gio.h>

namespace pvr {

/// Decodes the record in the parameters, a tuple "(is)", and hands it to the callbacks for signals.
void _pvr_signal_receive(const char *sender_name, const char *signal_name, GVariant *parameters) noexcept;

} // namespace pvr
