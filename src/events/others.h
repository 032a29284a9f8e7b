// What the service's results mean to applications other than the recorder, and to those that asked for one thing only.
#pragma once

#include "client/log.h"
#include "events/result_rows.h"

namespace pvr {

/// Tells them in the way of a method's row.
void tell_others(Here here, Others how, const ResultNews &news) noexcept;

/// The media browser's callback that waits for this recording's thumbnail, once.
void _call_third_party_callback_func(int status, const char *location) noexcept;

} // namespace pvr
