#include "test_programme.h"

#include "new_file.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <system_error>
#include <vector>

namespace simulator {
namespace {

constexpr std::size_t header_size = 4; ///< of a packet
constexpr std::uint64_t bits_per_packet = 8 * packet_size;
constexpr std::int64_t ticks_per_frame = system_clock_rate * 24 / 1000;
/// How long before it is due what is presented arrives.
constexpr std::int64_t lead = system_clock_rate / 5;

constexpr std::uint8_t payload_only = 0x10;
constexpr std::uint8_t adaptation_and_payload = 0x30;
constexpr std::uint8_t starts_a_unit = 0x40;

/// A frame of 32 kbit/s at 48 kHz, one channel. Nothing is allocated to any band: it is silent.
constexpr std::size_t frame_size = 96;
constexpr std::uint8_t frame_header[] = {0xff, 0xfd, 0x14, 0xc4};

constexpr std::size_t pes_header_size = 14; ///< with a presentation time
constexpr std::uint8_t audio_stream_id = 0xc0;
constexpr std::uint8_t private_stream_id = 0xbd;
constexpr std::uint8_t mpeg1_audio = 0x03;  ///< stream type
constexpr std::uint8_t private_data = 0x06; ///< stream type: private data in PES packets

std::uint8_t high(unsigned value) { return static_cast<std::uint8_t>(value >> 8); }
std::uint8_t low(unsigned value) { return static_cast<std::uint8_t>(value); }

/// All its bytes, the highest first.
template <typename Number>
void write_number(std::uint8_t *to, Number number)
{
    for (std::size_t i = sizeof number; i-- > 0; number = static_cast<Number>(number >> 8))
        to[i] = static_cast<std::uint8_t>(number);
}

/// When a packet arrives, in ticks. Whole seconds apart, so that the product does not overflow within a day.
std::int64_t arrival(std::uint64_t index, std::uint64_t bit_rate)
{
    constexpr auto rate = static_cast<std::uint64_t>(system_clock_rate);
    const std::uint64_t bits = index * bits_per_packet;
    return static_cast<std::int64_t>(bits / bit_rate * rate + (bits % bit_rate * rate + bit_rate / 2) / bit_rate);
}

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

/// A packet that starts a unit, with nothing in it.
Packet new_packet(std::uint16_t pid, std::uint8_t content, std::uint64_t number)
{
    Packet packet;
    packet.fill(0xff);
    packet[0] = sync_byte;
    packet[1] = static_cast<std::uint8_t>(starts_a_unit | high(pid));
    packet[2] = low(pid);
    packet[3] = static_cast<std::uint8_t>(content | (number & 0xf));
    return packet;
}

/// The header of a PES packet of this whole size: aligned, and to be presented at this time.
void write_pes_header(std::uint8_t *to, std::uint8_t stream_id, unsigned size, std::int64_t ticks)
{
    constexpr unsigned uncounted = 6;
    const unsigned length = size - uncounted;
    const std::uint8_t head[] = {0, 0, 1, stream_id, high(length), low(length), 0x84, 0x80, 5};
    write_time(std::copy(std::begin(head), std::end(head), to),
               static_cast<std::uint64_t>(ticks % clock_wrap / ticks_per_base));
}

} // namespace

TestProgramme::TestProgramme(int bit_rate) : bit_rate_(static_cast<std::uint64_t>(bit_rate))
{
    if (bit_rate < lowest_bit_rate)
        throw std::system_error(std::make_error_code(std::errc::invalid_argument),
                                "a bit rate of " + std::to_string(bit_rate));
}

Packet TestProgramme::next()
{
    using Turn = Packet (TestProgramme::*)() const;
    constexpr Turn turns[] = {&TestProgramme::association, &TestProgramme::map, &TestProgramme::audio};
    const bool is_of_frame = turn_ != 0 || is_frame_due();
    const Packet packet = is_of_frame ? (this->*turns[turn_])() : count();
    ++index_;
    if (is_of_frame) {
        turn_ = (turn_ + 1) % std::size(turns);
        frames_ += turn_ == 0 ? 1 : 0;
    } else {
        ++counts_;
    }
    return packet;
}

/// Whether the next packet arrives when the next frame's turn has come, or later. At the lowest rate it always does.
bool TestProgramme::is_frame_due() const
{
    constexpr std::uint64_t frames_per_3_seconds = 125;
    return index_ * bits_per_packet * frames_per_3_seconds >= frames_ * bit_rate_ * 3;
}

Packet TestProgramme::association() const
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
    return table(association_pid, section);
}

Packet TestProgramme::map() const
{
    std::uint8_t section[] = {
        0x02, // table id
        0xb0,
        23, // length behind here
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
        private_data,
        static_cast<std::uint8_t>(0xe0 | high(count_pid)),
        low(count_pid),
        0xf0,
        0, // no descriptors
    };
    if (bit_rate_ > lowest_bit_rate)
        return table(map_pid, section);
    constexpr std::uint8_t entry_size = 5;
    section[2] -= entry_size;
    return table(map_pid, std::span(section).first<sizeof section - entry_size>());
}

/// A packet that holds one section, to which its checksum is added.
Packet TestProgramme::table(std::uint16_t pid, std::span<const std::uint8_t> section) const
{
    Packet packet = new_packet(pid, payload_only, frames_);
    packet[header_size] = 0; // the section starts at once
    write_number(std::copy(section.begin(), section.end(), &packet[header_size + 1]), checksum(section));
    return packet;
}

Packet TestProgramme::audio() const
{
    constexpr std::size_t unit_size = pes_header_size + frame_size;
    constexpr std::size_t adaptation_size = packet_size - header_size - unit_size;
    Packet packet = new_packet(audio_pid, adaptation_and_payload, frames_);
    packet[4] = adaptation_size - 1;
    packet[5] = 0x50; // may be entered here; has a clock reference
    write_clock_reference(&packet[6], arrival(index_, bit_rate_) % clock_wrap);

    std::uint8_t *unit = &packet[header_size + adaptation_size];
    write_pes_header(unit, audio_stream_id, unit_size, static_cast<std::int64_t>(frames_) * ticks_per_frame + lead);
    std::uint8_t *silence = unit + pes_header_size;
    std::fill_n(std::copy(std::begin(frame_header), std::end(frame_header), silence), frame_size - sizeof frame_header,
                std::uint8_t{0});
    return packet;
}

Packet TestProgramme::count() const
{
    Packet packet = new_packet(count_pid, payload_only, counts_);
    write_pes_header(&packet[header_size], private_stream_id, packet_size - header_size,
                     arrival(index_, bit_rate_) + lead);
    write_number(&packet[header_size + pes_header_size], counts_);
    return packet;
}

void write_test_programme(const std::string &path, int seconds, int bit_rate)
{
    TestProgramme programme(bit_rate);
    NewFile file(path);
    std::vector<std::uint8_t> second;
    std::uint64_t packets = 0;
    for (int i = 1; i <= seconds; ++i) {
        const std::uint64_t end =
            static_cast<std::uint64_t>(i) * static_cast<std::uint64_t>(bit_rate) / bits_per_packet;
        second.clear();
        for (; packets < end; ++packets) {
            const Packet packet = programme.next();
            second.insert(second.end(), packet.begin(), packet.end());
        }
        file.write(second);
    }
    file.publish();
}

} // namespace simulator
