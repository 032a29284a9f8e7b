// What is left on a device by a service that was ended in the middle: killed, or by a power cut.
#pragma once

#include <string>
#include <vector>

namespace simulator {

/// Marks the recordings in a folder that were cut off as incomplete, as long as their streams are, and removes a
/// timeshift. What another service is writing is left alone, and so is a recording without an info file.
/// Returns what was done, and what could not be, for the log.
std::vector<std::string> recover(const std::string &folder);

} // namespace simulator
