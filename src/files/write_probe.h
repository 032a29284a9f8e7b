// Whether a recording's device still takes files: a removed or read-only one does not.
#pragma once

namespace pvr {

/// 1 when no file can be made beside path, 0 when one can. A file called like the probe, path's name with "tmp" at
/// its end, is emptied and removed, unless it is the live timeshift or the file that the caller works on, named.
int _is_usb_disconnect(const char *path, const char *named = nullptr) noexcept;

} // namespace pvr
