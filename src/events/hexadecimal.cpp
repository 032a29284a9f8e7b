#include "events/hexadecimal.h"

#include <array>

namespace pvr {
namespace {

/// Stands for what is no digit: above every byte, and so is whatever it is combined with.
constexpr std::uint16_t no_digit = 0x100;

/// What each character is worth as a digit, times a factor.
constexpr std::array<std::uint16_t, 256> digit_values(unsigned factor)
{
    std::array<std::uint16_t, 256> values{};
    values.fill(no_digit);
    for (unsigned digit = 0; digit < 10; ++digit)
        values['0' + digit] = static_cast<std::uint16_t>(digit * factor);
    for (unsigned digit = 10; digit < 16; ++digit) {
        values['a' + digit - 10] = static_cast<std::uint16_t>(digit * factor);
        values['A' + digit - 10] = static_cast<std::uint16_t>(digit * factor);
    }
    return values;
}

constexpr std::array<std::uint16_t, 256> first_digits = digit_values(16);
constexpr std::array<std::uint16_t, 256> second_digits = digit_values(1);
static_assert(first_digits['0'] == 0 && first_digits['9'] == 0x90 && first_digits['F'] == 0xf0);
static_assert(second_digits['a'] == 10 && second_digits['g'] == no_digit && second_digits['/'] == no_digit);

unsigned value_of(char character) noexcept { return second_digits[static_cast<unsigned char>(character)]; }

/// White space of the C locale, which a scan skips.
bool is_space(char character) noexcept { return character == ' ' || (character >= '\t' && character <= '\r'); }

/// What is scanned from a pair that is no number of two digits.
std::uint8_t scanned(char first, char second) noexcept
{
    const bool is_negative = first == '-';
    if (value_of(first) != no_digit)
        return static_cast<std::uint8_t>(value_of(first));
    if (value_of(second) == no_digit || !(is_space(first) || first == '+' || is_negative))
        return 0;
    return static_cast<std::uint8_t>(is_negative ? 0U - value_of(second) : value_of(second));
}

} // namespace

void decode_hexadecimal(std::uint8_t *bytes, std::size_t size, const char *characters) noexcept
{
    unsigned all = 0;
    const auto *digits = reinterpret_cast<const unsigned char *>(characters);
    for (std::size_t i = 0; i < size; ++i) {
        const unsigned value = first_digits[digits[2 * i]] | second_digits[digits[2 * i + 1]];
        all |= value;
        bytes[i] = static_cast<std::uint8_t>(value);
    }
    if (all < no_digit)
        return; // one test serves for all pairs
    for (std::size_t i = 0; i < size; ++i) {
        const char first = characters[2 * i];
        const char second = characters[2 * i + 1];
        if (value_of(first) == no_digit || value_of(second) == no_digit)
            bytes[i] = scanned(first, second);
    }
}

} // namespace pvr
