// The layout of the fingerprint file's header. The blocks follow it; numbers are little-endian.
#pragma once

#include "client/byte_order.h"

#include <cstddef>
#include <cstdint>

namespace pvr {

inline constexpr int most_fingerprints = 300;

struct FingerprintHeader {
    std::uint32_t version;
    std::int32_t count; ///< of blocks, from 1
    std::int64_t recTime[most_fingerprints];
    std::uint32_t bufSize[most_fingerprints]; ///< in bytes
    std::uint32_t offset[most_fingerprints];  ///< in the file
};
static_assert(offsetof(FingerprintHeader, count) == 4);
static_assert(offsetof(FingerprintHeader, recTime) == 8);
static_assert(offsetof(FingerprintHeader, bufSize) == 2408);
static_assert(offsetof(FingerprintHeader, offset) == 3608);
static_assert(sizeof(FingerprintHeader) == 4808);

/// From the order of the file to that of this machine, and back again.
constexpr void turn_little_endian(FingerprintHeader &header) noexcept
{
    header.version = little_endian(header.version);
    header.count = little_endian(header.count);
    for (int i = 0; i < most_fingerprints; ++i) {
        header.recTime[i] = little_endian(header.recTime[i]);
        header.bufSize[i] = little_endian(header.bufSize[i]);
        header.offset[i] = little_endian(header.offset[i]);
    }
}

} // namespace pvr
