// What channels broadcast, as the options name it.
#pragma once

#include "channels.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace simulator {

/// "ID=SOURCE" options, by their channel. Throws std::invalid_argument that says what is wrong.
std::map<std::uint64_t, std::string> described_sources(const std::vector<std::string> &options,
                                                       const std::vector<Channel> &channels);

/// "ID=NUMBER" options: how many bits per second a channel broadcasts. Throws std::invalid_argument.
std::map<std::uint64_t, int> described_bit_rates(const std::vector<std::string> &options,
                                                 const std::vector<Channel> &channels);

} // namespace simulator
