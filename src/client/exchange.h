// One message to the service, packed and unpacked as GVariant does it.
#pragma once

#include <gio/gio.h>

namespace pvr {

/// Calls a method on the caller's thread with the bus's default time-out and waits for the answer. What is
/// sent follows the error, in the order of the request's format; then where each value of the reply goes.
/// False with the error set and no output touched when the bus or the service reports one, and when the
/// reply is of another type than its format.
bool exchange(GDBusProxy *proxy, const char *method, const char *request, const char *reply, GError **error,
              ...) noexcept;

/// Calls a method without waiting for an answer, nor for a failure.
void send(GDBusProxy *proxy, const char *method, const char *request, ...) noexcept;

} // namespace pvr
