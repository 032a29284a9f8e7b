#include "events/hexadecimal.h"

#include <array>

namespace pvr {
namespace {

constexpr std::int8_t no_digit = -1;

constexpr std::array<std::int8_t, 256> digit_values = [] {
    std::array<std::int8_t, 256> values{};
    values.fill(no_digit);
    for (int digit = 0; digit < 10; ++digit)
        values[static_cast<std::size_t>('0' + digit)] = static_cast<std::int8_t>(digit);
    for (int digit = 0; digit < 6; ++digit) {
        values[static_cast<std::size_t>('a' + digit)] = static_cast<std::int8_t>(10 + digit);
        values[static_cast<std::size_t>('A' + digit)] = static_cast<std::int8_t>(10 + digit);
    }
    return values;
}();
static_assert(digit_values['0'] == 0 && digit_values['9'] == 9 && digit_values['a'] == 10 && digit_values['F'] == 15);
static_assert(digit_values['g'] == no_digit && digit_values['/'] == no_digit && digit_values[':'] == no_digit);

int value_of(char character) noexcept { return digit_values[static_cast<unsigned char>(character)]; }

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
    return static_cast<std::uint8_t>(is_negative ? -value_of(second) : value_of(second));
}

} // namespace

void decode_hexadecimal(std::uint8_t *bytes, std::size_t size, const char *characters) noexcept
{
    for (std::size_t i = 0; i < size; ++i) {
        const char first = characters[2 * i];
        const char second = characters[2 * i + 1];
        const int value = value_of(first) * 16 + value_of(second);
        const bool is_number = value_of(first) != no_digit && value_of(second) != no_digit;
        bytes[i] = is_number ? static_cast<std::uint8_t>(value) : scanned(first, second);
    }
}

} // namespace pvr
