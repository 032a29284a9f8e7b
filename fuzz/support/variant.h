// Values of the wire made of any bytes, as GVariant takes them apart.
#pragma once

#include "support/input.h"

#include <gio/gio.h>
#include <memory>

namespace fuzz {

struct ReleaseVariant {
    void operator()(GVariant *value) const noexcept { g_variant_unref(value); }
};
using Variant = std::unique_ptr<GVariant, ReleaseVariant>;

/// The bytes stay the caller's for as long as the value lives, so that the address sanitizer sees what is read beyond
/// them. They need not be what a sender would make of a value: GVariant takes defaults for what makes no sense.
inline GVariant *from_bytes(const char *type, const Block &bytes)
{
    return g_variant_ref_sink(
        g_variant_new_from_data(G_VARIANT_TYPE(type), bytes.data(), bytes.size(), FALSE, nullptr, nullptr));
}

/// False for null.
inline bool is_of(GVariant *value, const char *type)
{
    return value != nullptr && g_variant_is_of_type(value, G_VARIANT_TYPE(type)) != FALSE;
}

} // namespace fuzz
