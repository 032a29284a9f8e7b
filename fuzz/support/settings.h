// A file of settings that is nowhere but in memory, and what its readers promise of the mistakes in it.
#pragma once

#include "support/input.h"

#include <exception>
#include <functional>

namespace fuzz {

/// The path under which the readers find it.
inline constexpr char settings_path[] = "/nowhere/settings.toml";

/// Has read() read these bytes. False when it threw: then it told of mistakes in the file by what it is documented to
/// throw, each on a line of its own that begins with the path and the number of a line of the file.
bool is_accepted(Bytes content, const std::function<void()> &read);

} // namespace fuzz
