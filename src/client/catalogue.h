// The library's message catalogue, bound once per process.
#pragma once

#include "client/log.h"

namespace pvr {

inline constexpr char PVR_SERVICE_API_MO_NAME[] = "org.vexan.pvr-service-api";
extern const char PVR_SERVICE_API_MO_LOCALE[];

/// Binds the catalogue unless that was done already; logs at here either way.
void bind_catalogue(Here here) noexcept;

/// A message in the language that the application has set by setlocale(); its id where there is no translation.
const char *translated(const char *message_id) noexcept;

} // namespace pvr
