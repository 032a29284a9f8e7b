// How long the service takes until it answers.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace simulator {

/// How long calls wait before anything is done with them, in milliseconds of the machine's time.
struct Latencies {
    static constexpr int longest = 60 * 60 * 1000;

    std::uint32_t all = 0;
    std::map<std::string, std::uint32_t> methods{}; ///< in place of the one of all

    std::uint32_t of(const std::string &method) const
    {
        const auto own = methods.find(method);
        return own == methods.end() ? all : own->second;
    }
    bool operator==(const Latencies &) const = default;
};

} // namespace simulator
