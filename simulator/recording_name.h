// How the files of recordings are named.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace simulator {

constexpr char recording_extension[] = ".srf";

/// The path of a recording that is not there yet: "/m/20261122-140000-First.srf", "/m/undated-First-2.srf". The time is
/// in seconds since 1970 UTC.
std::string new_recording_path(const std::string &folder, const std::string &channel, std::optional<std::int64_t> time);

} // namespace simulator
