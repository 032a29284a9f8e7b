// Which storage devices the command line and the environment ask for.
#pragma once

#include "devices.h"

#include <string>
#include <vector>

namespace simulator {

/// A device for each NAME=FOLDER. Folders become absolute, and their links are resolved. Throws std::invalid_argument
/// with a reason: a device is formatted as a whole, so that its folder must not hold another device or somebody's home.
std::vector<DeviceDescription> described_devices(const std::vector<std::string> &fast,
                                                 const std::vector<std::string> &slow);

/// The one device of a sandbox, whose folder is made. Throws std::invalid_argument or
/// std::filesystem::filesystem_error.
std::vector<DeviceDescription> sandbox_devices(const std::string &sandbox);

} // namespace simulator
