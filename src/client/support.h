// Whether the product supports recording: asked at the head of every exported call.
#pragma once

namespace pvr {

/// 0 when it does, -2 when it does not. Never cached: the platform may be asked on every call.
int _is_support_pvr() noexcept;

} // namespace pvr
