// A small programme that really plays: one channel of silence, as a transport stream of constant bit rate. It stands in
// for a broadcast.
#pragma once

#include "transport_stream.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace simulator {

using Packet = std::array<std::uint8_t, packet_size>;

/// Its packets one after another, for ever. Packet n arrives n times the length of a packet after the first, which the
/// clock references tell to the tick. Every 24 ms begins with a programme association table (PAT), a programme map
/// table (PMT), and an audio packet that carries a clock reference and one whole frame of MPEG-1 layer II; these fill
/// the lowest bit rate. Above it the room between them is a second stream, each packet of which is a private PES packet
/// that begins with its number, from 0, in 64 bits, the highest byte first: who finds a gap knows what was lost.
class TestProgramme {
public:
    static constexpr int lowest_bit_rate = 188'000;
    static constexpr int highest_bit_rate = 50'000'000;
    static constexpr std::uint16_t programme_number = 1;
    static constexpr std::uint16_t map_pid = 0x100;
    static constexpr std::uint16_t audio_pid = 0x101;
    static constexpr std::uint16_t count_pid = 0x102;

    /// The bit rate is that of the whole stream, in bits per second. Throws std::system_error when it is below the
    /// lowest.
    explicit TestProgramme(int bit_rate = lowest_bit_rate);

    Packet next();

private:
    bool is_frame_due() const;
    Packet association() const;
    Packet map() const;
    Packet audio() const;
    Packet count() const;
    Packet table(std::uint16_t pid, std::span<const std::uint8_t> section) const;

    std::uint64_t bit_rate_;
    std::uint64_t index_ = 0;  ///< of the next packet
    std::uint64_t frames_ = 0; ///< sent so far, each with its tables
    std::uint64_t counts_ = 0; ///< packets of the second stream, sent so far
    std::size_t turn_ = 0;     ///< of the packets that belong to a frame
};

/// The longest file that is written, in seconds: as long as its clock counts without starting again.
constexpr int longest_programme = 24 * 60 * 60;

/// Writes the programme to a file, which appears whole or not at all, in place of one of the same name.
/// Throws std::system_error.
void write_test_programme(const std::string &path, int seconds, int bit_rate = TestProgramme::lowest_bit_rate);

} // namespace simulator
