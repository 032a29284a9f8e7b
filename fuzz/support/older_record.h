// What the record of an older info file must be, converted from tables that are not the library's.
#pragma once

#include "support/input.h"

#include <vector>

namespace fuzz {

inline constexpr std::size_t record_size = 10905;

enum class Generation { current, ardel, selk };

/// By the size of the file.
Generation generation_of(std::size_t size) noexcept;

/// How much of a file of an older generation counts.
std::size_t image_size(Generation generation) noexcept;

/// The record of an image, which counts as zero behind its end.
std::vector<std::uint8_t> converted(Bytes image, Generation generation);

} // namespace fuzz
