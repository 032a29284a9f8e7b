// What a configuration file says of the set.
#pragma once

#include "equipment.h"
#include "toml_file.h"

#include <string>

namespace simulator {

/// What the file sets; all else stays as it is without one. Throws as TomlFile does.
Equipment configured(const std::string &path);

/// The same from a table of a file, which keeps the mistakes.
Equipment configured(const TomlFile &file, const TomlTable &table);

} // namespace simulator
