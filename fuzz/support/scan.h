// What is scanned from two characters by "%02x", for all pairs: what the library's decoding is compared with.
#pragma once

#include <cstdint>
#include <cstdio>
#include <vector>

namespace fuzz {

inline std::uint8_t scanned(std::uint8_t first, std::uint8_t second)
{
    static const std::vector<std::uint8_t> all = [] {
        std::vector<std::uint8_t> table;
        table.reserve(0x10000);
        for (unsigned pair = 0; pair < 0x10000; ++pair) {
            const char characters[] = {static_cast<char>(pair >> 8), static_cast<char>(pair & 0xff), '\0'};
            unsigned value = 0;
            std::sscanf(characters, "%02x", &value);
            table.push_back(static_cast<std::uint8_t>(value));
        }
        return table;
    }();
    return all[std::size_t{first} << 8 | second];
}

} // namespace fuzz
