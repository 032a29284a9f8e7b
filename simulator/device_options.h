// Which storage devices the command line and the environment ask for.
#pragma once

#include "devices.h"

#include <string>
#include <vector>

namespace simulator {

/// A device, whose folder becomes absolute, and its links are resolved. Throws std::invalid_argument with a reason: a
/// device is formatted as a whole, so that its folder must not hold somebody's home.
DeviceDescription described_device(const std::string &name, const std::string &folder, bool is_slow);

/// Throws std::invalid_argument with a reason when one of these devices cannot be there beside the other.
void check_together(const DeviceDescription &one, const DeviceDescription &other);

/// A device for each NAME=FOLDER. Throws std::invalid_argument as the two above.
std::vector<DeviceDescription> described_devices(const std::vector<std::string> &fast,
                                                 const std::vector<std::string> &slow);

/// The one device of a sandbox, whose folder is made. Throws std::invalid_argument or
/// std::filesystem::filesystem_error.
std::vector<DeviceDescription> sandbox_devices(const std::string &sandbox);

} // namespace simulator
