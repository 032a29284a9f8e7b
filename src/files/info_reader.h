// Reading recording-info files for the library itself; applications call svc_pvr_get_pvr_file_info.
#pragma once

#include "pvr_records.h"

namespace pvr {

/// What a file of the current generation says, as it stands: nothing is locked, measured, repaired or converted, so
/// an older file is read as if it were a current one. 0 or -2; info is filled, or holds what could be read
/// and zeros, and is untouched when the path is refused.
int _svc_pvr_get_pvr_file_info_vexan(const char *file_path, pvr_file_info_s *info) noexcept;

} // namespace pvr
