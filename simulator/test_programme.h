// A small programme that really plays: one channel of silence, as a transport stream of constant bit rate. It stands in
// for a broadcast.
#pragma once

#include "transport_stream.h"

#include <array>
#include <cstdint>
#include <string>

namespace simulator {

using Packet = std::array<std::uint8_t, packet_size>;

/// Its packets one after another, for ever: a programme association table (PAT), a programme map table (PMT), and an
/// audio packet that carries a clock reference and one whole frame of MPEG-1 layer II, of 24 ms.
class TestProgramme {
public:
    static constexpr int packets_per_second = 125;
    static constexpr std::uint16_t programme_number = 1;
    static constexpr std::uint16_t map_pid = 0x100;
    static constexpr std::uint16_t audio_pid = 0x101;

    Packet next();

private:
    Packet table(std::uint16_t pid, const std::uint8_t *section, std::size_t size);
    Packet association();
    Packet map();
    Packet audio();

    std::uint64_t index_ = 0; ///< of the next packet
};

/// The longest file that is written, in seconds: as long as its clock counts without starting again.
constexpr int longest_programme = 24 * 60 * 60;

/// Writes the programme to a file, which appears whole or not at all, in place of one of the same name.
/// Throws std::system_error.
void write_test_programme(const std::string &path, int seconds);

} // namespace simulator
