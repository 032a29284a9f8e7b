// The info file beside a recording, which says what it is a recording of and whether it is whole.
#pragma once

#include "channels.h"
#include "pvr_records.h"
#include "source.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace simulator {

/// Why a recording is not whole, as its info file says; 5 is what the library finds out by itself.
enum IncompleteReason : std::uint16_t {
    is_whole = 0,
    device_was_full = 1,
    device_failed = 2,
    source_failed = 3,
    was_cut_off = 4, ///< the service itself was ended
};

/// The path with another extension, which has three letters as the old one.
std::string with_extension(std::string path, const char *extension);

/// What there is to say when a recording begins.
pvr_file_info_s info_of(const Channel &channel, const std::optional<Programme> &programme,
                        const StreamDescription &stream, std::uint32_t start_time);

/// Cuts a text to what a field has room for, at the end of a character.
void set_text(char *field, std::size_t size, const std::string &text);

/// Makes the file. Throws std::system_error, also when there is one already.
void make_info(const std::string &path, const pvr_file_info_s &info);

/// What the file says; nothing when there is none, or it is no info file of the present generation.
std::optional<pvr_file_info_s> read_info(const std::string &path);

/// Changes what the file says, applications being kept out meanwhile. Does nothing when read_info() tells
/// nothing; throws std::system_error when it cannot be written.
void change_info(const std::string &path, const std::function<void(pvr_file_info_s &)> &change);

} // namespace simulator
