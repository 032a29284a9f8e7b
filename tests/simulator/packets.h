// Transport stream packets as a test reads and writes them, by the standard and not by the simulator's code.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace packets {

constexpr std::size_t size = 188;
/// The ticks of a clock reference: 27 MHz, starting again after 2^33 * 300.
constexpr std::int64_t rate = 27'000'000;
constexpr std::int64_t wrap = (std::int64_t{1} << 33) * 300;

/// A packet without content, of a pid.
inline std::string packet(int pid, std::uint8_t filler = 0xff)
{
    std::string bytes(size, static_cast<char>(filler));
    bytes[0] = 0x47;
    bytes[1] = static_cast<char>(pid >> 8);
    bytes[2] = static_cast<char>(pid);
    bytes[3] = 0x10;
    return bytes;
}

/// A packet of nothing but a clock reference.
inline std::string clock(int pid, std::int64_t ticks, std::uint8_t filler = 0xff)
{
    std::string bytes = packet(pid, filler);
    const std::uint64_t field =
        static_cast<std::uint64_t>(ticks / 300) << 15 | 0x7e00 | static_cast<std::uint64_t>(ticks % 300);
    bytes[3] = 0x20;
    bytes[4] = static_cast<char>(183);
    bytes[5] = 0x10;
    for (unsigned i = 0; i < 6; ++i)
        bytes[6 + i] = static_cast<char>(field >> (40 - 8 * i));
    return bytes;
}

/// What a test wants to know of a packet.
struct Parsed {
    int pid;
    int counter;
    bool starts_unit;
    std::optional<std::int64_t> ticks; ///< of its clock reference
    std::vector<std::uint8_t> payload;
};

inline Parsed parse(std::span<const std::uint8_t> bytes)
{
    Parsed parsed{(bytes[1] & 0x1f) * 256 + bytes[2], bytes[3] & 0xf, (bytes[1] & 0x40) != 0, std::nullopt, {}};
    std::size_t at = 4;
    if ((bytes[3] & 0x20) != 0) {
        if (bytes[4] >= 7 && (bytes[5] & 0x10) != 0) {
            std::uint64_t field = 0;
            for (std::size_t i = 6; i < 12; ++i)
                field = field * 256 + bytes[i];
            constexpr std::uint64_t reserved = 0x7e00; // all ones
            if ((field & reserved) == reserved)
                parsed.ticks = static_cast<std::int64_t>(field >> 15) * 300 + static_cast<std::int64_t>(field & 0x1ff);
        }
        at += 1U + bytes[4];
    }
    if ((bytes[3] & 0x10) != 0)
        parsed.payload.assign(bytes.begin() + static_cast<std::ptrdiff_t>(at), bytes.end());
    return parsed;
}

} // namespace packets
