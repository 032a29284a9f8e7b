// What the functions that stand before the libraries' ask: is this call of the library's to fail?
#pragma once

#include "faults/fault.h"

#include <optional>

namespace faults {

/// Counts a call if it comes from the library, by its return address. What is to become of it, if it is to fail; of
/// the call after one that filled a file up it is a failure.
struct Strike {
    Effect effect;
    int error;
};
std::optional<Strike> strike(Kind kind, const void *caller) noexcept;

/// Whether a call comes from the library on the thread that watches.
bool is_watched(const void *caller) noexcept;

const Service &service() noexcept;

} // namespace faults
