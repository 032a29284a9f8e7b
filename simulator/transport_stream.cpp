#include "transport_stream.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <span>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace simulator {
namespace {

/// A part of the file, and where it begins.
struct Part {
    off_t offset = 0;
    std::vector<std::uint8_t> bytes;
};

struct ClockReference {
    int pid;
    std::int64_t ticks;
    off_t offset; ///< of its packet
};

Part read_part(int file, off_t offset, off_t end)
{
    Part part{offset, std::vector<std::uint8_t>(static_cast<std::size_t>(end - offset))};
    std::size_t filled = 0;
    while (filled < part.bytes.size()) {
        const ssize_t count =
            pread(file, part.bytes.data() + filled, part.bytes.size() - filled, offset + static_cast<off_t>(filled));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw std::system_error(errno, std::generic_category());
        if (count == 0)
            break; // the file has become shorter
        filled += static_cast<std::size_t>(count);
    }
    part.bytes.resize(filled);
    return part;
}

/// Whether packets start at this place and behind it, as far as the part goes.
bool is_in_step(std::span<const std::uint8_t> bytes, std::size_t at)
{
    std::size_t packets = 0;
    for (; packets < packets_to_trust && at + packet_size <= bytes.size(); at += packet_size, ++packets)
        if (bytes[at] != sync_byte)
            return false;
    return packets != 0;
}

/// The next whole packet at or behind a place.
std::optional<std::size_t> next_packet(std::span<const std::uint8_t> bytes, std::size_t at)
{
    for (; at + packet_size <= bytes.size(); ++at)
        if (bytes[at] == sync_byte && is_in_step(bytes, at))
            return at;
    return std::nullopt;
}

std::optional<std::int64_t> clock_reference(std::span<const std::uint8_t, packet_size> packet)
{
    constexpr std::uint8_t transport_error = 0x80;
    constexpr std::uint8_t has_adaptation_field = 0x20;
    constexpr std::uint8_t has_clock_reference = 0x10;
    constexpr std::size_t shortest_field = 7;
    constexpr std::size_t longest_field = 183;
    const bool is_carried = (packet[1] & transport_error) == 0 && (packet[3] & has_adaptation_field) != 0 &&
                            packet[4] >= shortest_field && packet[4] <= longest_field &&
                            (packet[5] & has_clock_reference) != 0;
    if (!is_carried)
        return std::nullopt;
    std::int64_t base = 0;
    for (std::size_t i = 6; i < 10; ++i)
        base = base << 8 | packet[i];
    base = base << 1 | packet[10] >> 7;
    const std::int64_t rest = (packet[10] & 1) << 8 | packet[11];
    return base * ticks_per_base + rest;
}

/// Calls a function with every clock reference of a part, in order, until it returns false.
template <typename Function>
void each_clock_reference(const Part &part, Function function)
{
    const std::span<const std::uint8_t> bytes(part.bytes);
    for (auto at = next_packet(bytes, 0); at; at = next_packet(bytes, *at + packet_size)) {
        const auto packet = bytes.subspan(*at).first<packet_size>();
        const std::optional<std::int64_t> ticks = clock_reference(packet);
        const int pid = (packet[1] & 0x1f) << 8 | packet[2];
        if (ticks && !function(ClockReference{pid, *ticks, part.offset + static_cast<off_t>(*at)}))
            return;
    }
}

std::optional<ClockReference> first_clock_reference(const Part &part)
{
    std::optional<ClockReference> first;
    each_clock_reference(part, [&](const ClockReference &reference) {
        first = reference;
        return false;
    });
    return first;
}

std::optional<ClockReference> last_clock_reference(const Part &part, int pid)
{
    std::optional<ClockReference> last;
    each_clock_reference(part, [&](const ClockReference &reference) {
        if (reference.pid == pid)
            last = reference;
        return true;
    });
    return last;
}

} // namespace

Microseconds transport_stream_length(int file, off_t size)
{
    constexpr auto probe = static_cast<off_t>(probe_size);
    const Part head = read_part(file, 0, std::min(size, probe));
    // A recording may begin within a packet, but no later than at the next one.
    const auto start = next_packet(head.bytes, 0);
    if (!start || *start >= packet_size)
        throw NoTransportStream("no transport stream: it does not consist of 188-byte packets");
    const std::optional<ClockReference> first = first_clock_reference(head);
    if (!first)
        throw NoTransportStream("no transport stream to play: no clock reference at its beginning");

    // In step with the head, so that a payload that looks like packets is not taken for some.
    off_t behind = std::max<off_t>(size - probe, 0);
    behind -= (behind - static_cast<off_t>(*start)) % static_cast<off_t>(packet_size);
    const Part tail = read_part(file, std::max<off_t>(behind, 0), size);
    const std::optional<ClockReference> last = last_clock_reference(tail, first->pid);
    if (!last || last->offset <= first->offset)
        throw NoTransportStream("no transport stream to play: no clock reference at its end");

    const std::int64_t span = (last->ticks - first->ticks + clock_wrap) % clock_wrap;
    if (span == 0)
        throw NoTransportStream("no transport stream to play: its clock stands still");
    const double rate = static_cast<double>(last->offset - first->offset) / static_cast<double>(span);
    const double seconds = static_cast<double>(size) / rate / static_cast<double>(system_clock_rate);
    return std::chrono::round<Microseconds>(std::chrono::duration<double>(seconds));
}

} // namespace simulator
