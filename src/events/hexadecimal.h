// Records that arrive as hexadecimal digits.
#pragma once

#include <cstddef>
#include <cstdint>

namespace pvr {

/// Decodes twice as many characters as there are bytes. A pair that is no number of two digits gives what "%02x" scans
/// from these two characters, and 0 when it scans nothing.
void decode_hexadecimal(std::uint8_t *bytes, std::size_t size, const char *characters) noexcept;

} // namespace pvr
