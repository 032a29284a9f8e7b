// Whether the product supports recording: asked at the head of every exported call.
#pragma once

#include "client/log.h"

namespace pvr {

/// 0 when it does, -2 when it does not. Never cached: the platform may be asked on every call.
int _is_support_pvr() noexcept;

/// The same, with the line at here that calls log when they refuse.
int check_support(Here here) noexcept;

} // namespace pvr
