// The byte order of records and files: little-endian on every machine.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>

namespace pvr {

/// A number of this machine as records have it, and back again.
template <std::integral T>
constexpr T little_endian(T number) noexcept
{
    if constexpr (std::endian::native == std::endian::little)
        return number;
    auto bytes = std::bit_cast<std::array<unsigned char, sizeof(T)>>(number);
    std::reverse(bytes.begin(), bytes.end());
    return std::bit_cast<T>(bytes);
}

} // namespace pvr
