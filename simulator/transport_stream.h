// MPEG transport streams: the form of a packet, and how long a stream plays.
#pragma once

#include "playback.h"

#include <cstdint>
#include <stdexcept>
#include <sys/types.h>

namespace simulator {

constexpr std::size_t packet_size = 188;
constexpr std::uint8_t sync_byte = 0x47;
/// So many packets in a row have to start with it before a place counts as the start of one.
constexpr std::size_t packets_to_trust = 5;

/// A clock reference (PCR) is 33 bits of a 90 kHz clock and a rest at 27 MHz, of which it holds 300 each.
constexpr std::int64_t system_clock_rate = 27'000'000;
constexpr std::int64_t ticks_per_base = 300;
constexpr std::int64_t clock_wrap = (std::int64_t{1} << 33) * ticks_per_base;

/// How much is read from either end of a file, at most: several clock references at any broadcast's rate.
constexpr std::size_t probe_size = std::size_t{2} << 20;

class NoTransportStream : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// How long a stream plays: from the first to the last clock reference of its first programme, and what lies before
/// and behind them at the mean rate between them. A clock that starts again once within the stream is followed.
/// Throws NoTransportStream, or std::system_error when the file cannot be read.
Microseconds transport_stream_length(int file, off_t size);

} // namespace simulator
