// Stands in for what a call leaves the process by: the bus, the platform, and the one file of the whole machine
// that a call looks for. No bus runs, and nothing that happens depends on time.
#pragma once

#include <gio/gio.h>

namespace performance {

/// The handler that the library has connected to its proxy's signals; null before it has.
using SignalHandler = void(GDBusProxy *, const char *sender, const char *signal, GVariant *parameters, void *data);
SignalHandler *signal_handler() noexcept;

} // namespace performance
