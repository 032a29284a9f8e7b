// Which paths name a recording or a file beside it.
#pragma once

namespace pvr {

/// 1 for a path that ends in .srf, .inf or .tmp (case matters), else 0 with a log line that says why.
int _is_valid_pvr_srf_inf_file(const char *path) noexcept;

} // namespace pvr
