// Removes a file, or a folder with everything in it and nothing else.
#pragma once

#include <string>
#include <vector>

namespace sandbox {

/// Follows no symbolic link, enters nothing that is mounted, and opens folders that are closed to their
/// owner. Returns what is left behind and why, a line each. A path that is not there is no fault.
std::vector<std::string> remove_tree(const std::string &path);

} // namespace sandbox
