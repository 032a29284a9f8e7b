// Which paths name a recording, how the files beside it are named, and how large a file is.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string_view>
#include <sys/types.h>

namespace pvr {

/// 1 for a path that ends in .srf, .inf or .tmp (case matters), else 0 with a log line that says why.
int _is_valid_pvr_srf_inf_file(const char *path) noexcept;

/// The path of a file beside a recording. Paths are cut at 255 bytes, before the name is made of them.
class SidePath {
public:
    static constexpr std::size_t capacity = 256;

    /// The path with its last three characters overwritten, whatever they are: the extension is not parsed,
    /// and what was cut is cut. A path of fewer characters gives none.
    static SidePath with_extension(const char *path, const char (&extension)[4]) noexcept;
    /// The path with something appended, as in ".bak" and ".cft".
    static SidePath with_suffix(std::string_view path, const char *suffix) noexcept;

    /// Whether there is one.
    explicit operator bool() const noexcept { return text_[0] != '\0'; }

    const char *c_str() const noexcept { return text_; }

private:
    char text_[capacity] = {};
};

/// A size as the log's texts take it. A file that is larger than a machine of 32 bits can say this way is no file
/// beside a recording, and counts as the largest of them.
constexpr long as_long(off_t size) noexcept
{
    return static_cast<long>(std::min<off_t>(size, std::numeric_limits<long>::max()));
}

/// The size of a file in bytes; 0 for an empty one, -1 for one that cannot be opened or measured.
long _get_file_size(const char *path) noexcept;

} // namespace pvr
