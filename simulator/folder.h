// A device's folder. Nothing here leaves it: links are not followed, and what is mounted within it is left alone.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace simulator {

/// In MiB (2^20 bytes).
struct Space {
    std::int64_t available = 0;
    std::int64_t total = 0;
};

/// How much the file system of a folder holds; zeros when that cannot be told.
Space space_of(const std::string &folder);

/// Whether there is a folder, which is no link to one.
bool is_folder(const std::string &path);
bool is_writable(const std::string &folder);

/// Removes everything in a folder, but not the folder. Throws std::system_error at the first thing that stays.
void remove_content(const std::string &folder);

/// Makes a folder; `below` tells where, counted from a folder, and all but its last part must be there. Throws
/// std::system_error.
void make_folder_below(const std::string &folder, std::string_view below, mode_t mode);

} // namespace simulator
