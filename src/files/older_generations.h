// Recording-info files of earlier platforms: how they are told apart, and how they become today's record.
#pragma once

#include "pvr_records.h"

#include <cstddef>

namespace pvr {

/// An older generation of the recording-info file. Both have one layout, which ends earlier in one of them.
struct OlderGeneration {
    const char *name;
    const char *lower_case_name;
    std::size_t size; ///< of the image, in bytes; a file may have a few more
    void (*convert)(pvr_file_info_s *info, const unsigned char *image);
};

inline constexpr std::size_t largest_older_image = 12048;
inline constexpr std::size_t largest_older_file = 12052;

/// Where both keep the position at which playback was left: a number of seconds, 4 bytes, little-endian.
inline constexpr std::size_t older_resume_position = 788;

/// The generation of a file of this size, which is all that tells it; null for the current one.
const OlderGeneration *older_generation(long file_size) noexcept;

/// Fill a zeroed record from a whole image.
void _field_converter_ardel(pvr_file_info_s *info, const unsigned char *image) noexcept;
void _field_converter_selk(pvr_file_info_s *info, const unsigned char *image) noexcept;

inline constexpr std::size_t units_in_older_text = 256;

/// Big-endian UTF-16 to units in the order of this machine, up to and with the zero unit that ends it, and never
/// beyond 256 units.
void _trans_string(unsigned short *dst, const unsigned char *src) noexcept;

} // namespace pvr
