// The signal result_to_apps: results of operations, and the service's own reports.
#pragma once

#include "client/log.h"

#include <gio/gio.h>

namespace pvr {

/// Hands what the parameters, a tuple "(iv)", hold to the callbacks for results. Lines name the place here.
void receive_result(Here here, GVariant *parameters) noexcept;

} // namespace pvr
