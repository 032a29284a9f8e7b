// How answers reach the caller's buffers: null ones are skipped, and nothing is written beyond the
// limit that the public header gives.
#pragma once

#include "client/log.h"
#include "client/owned.h"

#include <cinttypes>
#include <cstddef>
#include <cstring>
#include <type_traits>

namespace pvr {

/// Writes to an out-parameter that the caller may have left null.
template <typename T>
void write_out(T *out, T value) noexcept
{
    if (out != nullptr)
        *out = value;
}

/// Copies at most limit bytes of text, without a terminator; returns how many. A cut may split a
/// UTF-8 character.
inline std::size_t copy_bytes(char *to, const char *text, std::size_t limit) noexcept
{
    const std::size_t length = strnlen(text, limit);
    std::memcpy(to, text, length);
    return length;
}

/// The caller's text buffers of 255 bytes: 254 bytes of text and a NUL. A null buffer is skipped.
inline void copy_text(char *to, const OwnedText &text) noexcept
{
    if (to != nullptr)
        to[copy_bytes(to, text.get(), 254)] = '\0';
}

/// The one buffer of 256 bytes: 255 bytes of text and a NUL.
inline void copy_long_text(char *to, const OwnedText &text) noexcept
{
    if (to != nullptr)
        to[copy_bytes(to, text.get(), 255)] = '\0';
}

/// A record's text field: as many bytes as fit, and a NUL.
template <std::size_t size>
void copy_field(char (&field)[size], const char *text) noexcept
{
    field[copy_bytes(field, text, size - 1)] = '\0';
}

/// The elements of an array of fixed-width numbers ("ai", "at") as (index, value), in order.
template <typename T>
class Elements {
public:
    struct Element {
        int index;
        T value;
    };

    class Iterator {
    public:
        Iterator(const T *values, int index) noexcept : values_(values), index_(index) {}
        Element operator*() const noexcept { return {index_, values_[index_]}; }
        Iterator &operator++() noexcept
        {
            ++index_;
            return *this;
        }
        bool operator==(const Iterator &other) const noexcept { return index_ == other.index_; }

    private:
        const T *values_;
        int index_;
    };

    explicit Elements(const OwnedVariant &array) noexcept
    {
        if (array)
            values_ = static_cast<const T *>(g_variant_get_fixed_array(array.get(), &count_, sizeof(T)));
    }
    Iterator begin() const noexcept { return {values_, 0}; }
    Iterator end() const noexcept { return {values_, static_cast<int>(count_)}; }

private:
    const T *values_ = nullptr;
    gsize count_ = 0;
};

template <typename T>
Elements<T> elements(const OwnedVariant &array) noexcept
{
    return Elements<T>(array);
}

/// Stores the elements of a list in order, as many as the caller has room for, and logs each at here.
/// A service that reports a count of 0 or less has sent no list.
template <typename T>
void store_list(Here here, const OwnedVariant &array, int count, T *list, int length) noexcept
{
    if (count <= 0)
        return;
    for (const auto [index, value] : elements<T>(array)) {
        if constexpr (std::is_signed_v<T>)
            PLAIN_INFO_AT(here, "index[%d] value[%d]\n", index, value);
        else
            PLAIN_INFO_AT(here, "index[%d] value[%" PRIu64 "]\n", index, value);
        if (index >= length)
            break;
        if (list != nullptr)
            list[index] = value;
    }
}

} // namespace pvr
