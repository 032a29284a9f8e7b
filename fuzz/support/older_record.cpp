#include "support/older_record.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>

namespace fuzz {
namespace {

enum class How { copied, milliseconds, text };

struct Move {
    std::size_t from, width, to, room;
    How how;
    bool is_big_endian, is_of_ardel;
};

/// Of two bytes, the same in every record.
struct Number {
    std::size_t to;
    std::uint8_t value;
};

#include "older_layout.h"

constexpr std::size_t units_of_a_name = 128, longest_title = 255, longest_text = 254;

void append_utf8(std::string &text, unsigned character)
{
    if (character < 0x80) {
        text += static_cast<char>(character);
        return;
    }
    const int more = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    constexpr unsigned leads[] = {0, 0xc0, 0xe0, 0xf0};
    text += static_cast<char>(leads[more] | character >> 6 * more);
    for (int i = more - 1; i >= 0; --i)
        text += static_cast<char>(0x80 | (character >> 6 * i & 0x3f));
}

/// Nothing when a surrogate has no other half.
std::optional<std::string> utf8(const std::vector<unsigned> &units)
{
    std::string text;
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (units[i] < 0xd800 || units[i] > 0xdfff) {
            append_utf8(text, units[i]);
            continue;
        }
        if (units[i] > 0xdbff || i + 1 == units.size() || units[i + 1] < 0xdc00 || units[i + 1] > 0xdfff)
            return {};
        append_utf8(text, 0x10000 + ((units[i] - 0xd800) << 10) + units[i + 1] - 0xdc00);
        ++i;
    }
    return text;
}

std::string text_of(const std::uint8_t *field, const Move &move)
{
    const std::size_t most = move.is_big_endian ? units_of_a_name : move.width / 2;
    std::vector<unsigned> units;
    for (std::size_t i = 0; i < most; ++i) {
        const unsigned first = field[2 * i], second = field[2 * i + 1];
        const unsigned unit = move.is_big_endian ? first << 8 | second : second << 8 | first;
        if (unit == 0)
            break;
        units.push_back(unit);
    }
    if (units.size() > longest_title)
        return {};
    return utf8(units).value_or("").substr(0, longest_text);
}

} // namespace

Generation generation_of(std::size_t size) noexcept
{
    return size == 12048 || size == 12052 ? Generation::ardel : size == 12044 ? Generation::selk : Generation::current;
}

std::size_t image_size(Generation generation) noexcept { return generation == Generation::ardel ? 12048 : 12044; }

std::vector<std::uint8_t> converted(Bytes bytes, Generation generation)
{
    std::vector<std::uint8_t> image = sized(bytes, static_cast<long>(image_size(generation)));
    std::vector<std::uint8_t> record(record_size);
    for (const Move &move : moves) {
        if (move.is_of_ardel && generation != Generation::ardel)
            continue;
        const std::uint8_t *const from = image.data() + move.from;
        std::uint8_t *const to = record.data() + move.to;
        if (move.how == How::text) {
            const std::string text = text_of(from, move);
            std::memcpy(to, text.data(), text.size());
        } else if (move.how == How::milliseconds) {
            std::uint32_t number = 0;
            std::memcpy(&number, from, sizeof number);
            number *= 1000;
            std::memcpy(to, &number, sizeof number);
        } else {
            std::memcpy(to, from, std::min(move.width, move.room));
        }
    }
    for (const Number &number : numbers)
        record[number.to] = number.value;
    return record;
}

} // namespace fuzz
