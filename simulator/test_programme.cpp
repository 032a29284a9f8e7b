#include "test_programme.h"

#include "new_file.h"

#include <algorithm>
#include <span>
#include <vector>

namespace simulator {
namespace {

constexpr std::uint64_t packets_per_frame = 3;
constexpr std::int64_t ticks_per_packet = system_clock_rate / TestProgramme::packets_per_second;
constexpr std::int64_t ticks_per_frame = ticks_per_packet * static_cast<std::int64_t>(packets_per_frame);
/// How long before it is due a frame arrives.
constexpr std::int64_t lead = system_clock_rate / 5;

constexpr std::uint8_t payload_only = 0x10;
constexpr std::uint8_t adaptation_and_payload = 0x30;
constexpr std::uint8_t starts_a_unit = 0x40;

/// A frame of 32 kbit/s at 48 kHz, one channel. Nothing is allocated to any band: it is silent.
constexpr std::size_t frame_size = 96;
constexpr std::uint8_t frame_header[] = {0xff, 0xfd, 0x14, 0xc4};

constexpr std::size_t pes_header_size = 14;
constexpr std::uint8_t audio_stream_id = 0xc0;
constexpr std::uint8_t mpeg1_audio = 0x03; ///< stream type

std::uint8_t high(unsigned value) { return static_cast<std::uint8_t>(value >> 8); }
std::uint8_t low(unsigned value) { return static_cast<std::uint8_t>(value); }

/// The CRC of the tables: polynomial 0x04c11db7, from all ones, nothing reflected.
std::uint32_t checksum(std::span<const std::uint8_t> bytes)
{
    std::uint32_t crc = 0xffffffff;
    for (const std::uint8_t byte : bytes) {
        crc ^= static_cast<std::uint32_t>(byte) << 24;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc << 1) ^ ((crc & 0x80000000) != 0 ? 0x04c11db7 : 0);
    }
    return crc;
}

void write_clock_reference(std::uint8_t *to, std::int64_t ticks)
{
    const auto base = static_cast<std::uint64_t>(ticks / ticks_per_base);
    const auto rest = static_cast<unsigned>(ticks % ticks_per_base);
    for (unsigned i = 0; i < 4; ++i)
        to[i] = static_cast<std::uint8_t>(base >> (25 - 8 * i));
    to[4] = static_cast<std::uint8_t>((base & 1) << 7 | 0x7e | (rest >> 8 & 1));
    to[5] = low(rest);
}

/// A presentation time of the 90 kHz clock, with its marker bits.
void write_time(std::uint8_t *to, std::uint64_t time)
{
    to[0] = static_cast<std::uint8_t>(0x21 | (time >> 30 & 7) << 1);
    to[1] = static_cast<std::uint8_t>(time >> 22);
    to[2] = static_cast<std::uint8_t>(time >> 14 | 1);
    to[3] = static_cast<std::uint8_t>(time >> 7);
    to[4] = static_cast<std::uint8_t>(time << 1 | 1);
}

} // namespace

Packet TestProgramme::next()
{
    constexpr Packet (TestProgramme::*turns[packets_per_frame])() = {&TestProgramme::association, &TestProgramme::map,
                                                                     &TestProgramme::audio};
    const Packet packet = (this->*turns[index_ % packets_per_frame])();
    ++index_;
    return packet;
}

/// A packet that holds one section, to which its checksum is added.
Packet TestProgramme::table(std::uint16_t pid, const std::uint8_t *section, std::size_t size)
{
    const auto counter = static_cast<std::uint8_t>(index_ / packets_per_frame & 0xf);
    Packet packet;
    packet.fill(0xff);
    const std::uint8_t head[] = {sync_byte, static_cast<std::uint8_t>(starts_a_unit | high(pid)), low(pid),
                                 static_cast<std::uint8_t>(payload_only | counter), 0 /* the section starts at once */};
    auto *to = std::copy_n(section, size, std::copy(std::begin(head), std::end(head), packet.begin()));
    const std::uint32_t crc = checksum({section, size});
    for (unsigned i = 0; i < 4; ++i)
        *to++ = static_cast<std::uint8_t>(crc >> (24 - 8 * i));
    return packet;
}

Packet TestProgramme::association()
{
    constexpr std::uint16_t association_pid = 0;
    const std::uint8_t section[] = {
        0x00, // table id
        0xb0,
        13, // length behind here
        0x00,
        0x01, // transport stream id
        0xc1,
        0,
        0, // version 0, current; section 0 of 0
        high(programme_number),
        low(programme_number),
        static_cast<std::uint8_t>(0xe0 | high(map_pid)),
        low(map_pid),
    };
    return table(association_pid, section, sizeof section);
}

Packet TestProgramme::map()
{
    const std::uint8_t section[] = {
        0x02, // table id
        0xb0,
        18, // length behind here
        high(programme_number),
        low(programme_number),
        0xc1,
        0,
        0, // version 0, current; section 0 of 0
        static_cast<std::uint8_t>(0xe0 | high(audio_pid)),
        low(audio_pid), // which packets carry the clock
        0xf0,
        0, // no descriptors
        mpeg1_audio,
        static_cast<std::uint8_t>(0xe0 | high(audio_pid)),
        low(audio_pid),
        0xf0,
        0, // no descriptors
    };
    return table(map_pid, section, sizeof section);
}

Packet TestProgramme::audio()
{
    constexpr std::size_t payload_size = pes_header_size + frame_size;
    constexpr std::size_t adaptation_size = packet_size - 4 - payload_size;
    constexpr std::size_t behind_length = 6; // what the length of a PES packet does not count
    const std::uint64_t frame = index_ / packets_per_frame;
    const std::int64_t arrives = static_cast<std::int64_t>(index_) * ticks_per_packet;
    const std::int64_t due = static_cast<std::int64_t>(frame) * ticks_per_frame + lead;

    Packet packet;
    packet.fill(0xff);
    const std::uint8_t head[] = {sync_byte,           static_cast<std::uint8_t>(starts_a_unit | high(audio_pid)),
                                 low(audio_pid),      static_cast<std::uint8_t>(adaptation_and_payload | (frame & 0xf)),
                                 adaptation_size - 1, 0x50}; // may be entered here; has a clock reference
    std::copy(std::begin(head), std::end(head), packet.begin());
    write_clock_reference(&packet[6], arrives % clock_wrap);

    std::uint8_t *pes = packet.data() + 4 + adaptation_size;
    const std::uint8_t pes_head[] = {0,    0,    1, audio_stream_id, 0, payload_size - behind_length,
                                     0x84, 0x80, 5}; // aligned; a presentation time of 5 bytes follows
    std::copy(std::begin(pes_head), std::end(pes_head), pes);
    write_time(pes + sizeof pes_head, static_cast<std::uint64_t>(due % clock_wrap / ticks_per_base));

    std::uint8_t *silence = pes + pes_header_size;
    std::fill_n(std::copy(std::begin(frame_header), std::end(frame_header), silence), frame_size - sizeof frame_header,
                std::uint8_t{0});
    return packet;
}

void write_test_programme(const std::string &path, int seconds)
{
    NewFile file(path);
    TestProgramme programme;
    std::vector<std::uint8_t> second;
    for (int i = 0; i < seconds; ++i) {
        second.clear();
        for (int packets = 0; packets < TestProgramme::packets_per_second; ++packets) {
            const Packet packet = programme.next();
            second.insert(second.end(), packet.begin(), packet.end());
        }
        file.write(second);
    }
    file.publish();
}

} // namespace simulator
