// Where a channel's transport stream comes from.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace simulator {

/// What an info file says of a stream; 0 for what is not known.
struct StreamDescription {
    std::uint16_t programme_number = 0;
    std::uint16_t clock_pid = 0; ///< carries the clock references
    std::uint16_t audio_pid = 0;
    std::uint16_t video_pid = 0;
};

/// A stream that is taken bit by bit, as fast as it is asked for. It never waits.
class Source {
public:
    virtual ~Source() = default;

    /// Takes what comes next, in whole packets: less than there is room for, or nothing, when no more has come yet.
    /// Throws std::system_error when no more will come; so does each further call.
    virtual std::size_t read(std::span<std::uint8_t> room) = 0;
    virtual StreamDescription description() const { return {}; }
};

/// Opens a source:
///     ""            the test programme, at the bit rate
///     "exec:TEXT"   the standard output of this command of /bin/sh, which begins at once and is ended with the source
///     anything else the path of a transport stream, which starts again at its end
/// Throws std::system_error when a file cannot be opened or holds no transport stream, or a command cannot be started.
std::unique_ptr<Source> open_source(const std::string &what, int bits_per_second);

} // namespace simulator
