// Numbers of records and files, which are little-endian on every machine.
#pragma once

#include <climits>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <type_traits>

namespace support {

/// What a record's field says, or the field that says a number: either is the other's way back.
template <std::integral T>
T as_little_endian(T field)
{
    using Unsigned = std::make_unsigned_t<T>;
    unsigned char bytes[sizeof field];
    std::memcpy(bytes, &field, sizeof field);
    Unsigned number = 0;
    for (std::size_t i = 0; i < sizeof bytes; ++i)
        number = static_cast<Unsigned>(number | static_cast<Unsigned>(bytes[i]) << (i * CHAR_BIT));
    return static_cast<T>(number);
}

} // namespace support
