#include "info_fields.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <glib.h>
#include <iterator>
#include <memory>
#include <string_view>

#include "arguments.h"

namespace pvrctl {
namespace {

using pvr::FieldKind;
using pvr::RecordField;

constexpr std::size_t number_width = 4; ///< of each number where a field has several

std::string_view bytes_of(const pvr_file_info_s &record, const RecordField &field)
{
    return {reinterpret_cast<const char *>(&record) + field.offset, field.width};
}

std::uint64_t number_in(std::string_view bytes)
{
    std::uint64_t number = 0;
    std::memcpy(&number, bytes.data(), bytes.size());
    return number;
}

std::int64_t signed_number_in(std::string_view bytes)
{
    const std::size_t unused = 8 * (sizeof(std::uint64_t) - bytes.size());
    return static_cast<std::int64_t>(number_in(bytes) << unused) >> unused;
}

std::string_view before_nul(std::string_view bytes) { return bytes.substr(0, bytes.find('\0')); }

bool is_utf_8(std::string_view text)
{
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

std::string made_utf_8(std::string_view text)
{
    const std::unique_ptr<char, decltype(&g_free)> valid(
        g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), &g_free);
    return valid.get();
}

Json list_of_numbers(std::string_view bytes)
{
    Json numbers = Json::array();
    for (std::size_t at = 0; at < bytes.size(); at += number_width)
        numbers.push_back(number_in(bytes.substr(at, number_width)));
    return numbers;
}

// ---- What numbers mean. Codes have the names that the development service gives them.

std::string on_the_wall(std::uint64_t seconds)
{
    return seconds != 0 ? local_time(static_cast<std::int64_t>(seconds)) : "not known";
}

std::string in_hours(std::uint64_t milliseconds)
{
    const auto seconds = static_cast<unsigned>(milliseconds / 1000);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%u:%02u:%02u", seconds / 3600, seconds / 60 % 60, seconds % 60);
    return text.data();
}

std::string as_flag(std::uint64_t number) { return (number & 0xffff) != 0 ? "yes" : "no"; }

struct CodeName {
    std::uint64_t code;
    const char *name;
};

template <std::size_t size>
std::string with_name(const std::array<CodeName, size> &names, std::uint64_t code)
{
    const auto found = std::ranges::find(names, code, &CodeName::code);
    return std::to_string(code) + (found != names.end() ? std::string(", ") + found->name : "");
}

std::string as_thumbnail(std::uint64_t code)
{
    return with_name(std::array{CodeName{0, "video"}, CodeName{1, "audio only"}}, code);
}

std::string as_content_version(std::uint64_t code) { return with_name(std::array{CodeName{1, "ATSC 3.0"}}, code); }

std::string as_complete(std::uint64_t code)
{
    return with_name(std::array{CodeName{0, "not finished"}, CodeName{1, "finished"}}, code);
}

std::string as_reason(std::uint64_t code)
{
    return with_name(std::array{CodeName{0, "none"}, CodeName{1, "the device was full"},
                                CodeName{2, "the device has failed"}, CodeName{3, "the source has failed"},
                                CodeName{4, "the service was ended in the middle"}, CodeName{5, "it was cut off"}},
                     code);
}

struct Meaning {
    std::string_view field;
    std::string (*text)(std::uint64_t number);
};
constexpr Meaning meanings[] = {
    {"start_time", on_the_wall},
    {"duration", in_hours},
    {"resume_play_pos", in_hours},
    {"nThumbnailType", as_thumbnail},
    {"flag_HD", as_flag},
    {"flag_TTX", as_flag},
    {"content_version", as_content_version},
    {"record_complete", as_complete},
    {"incomplete_reason", as_reason},
};
static_assert(std::ranges::all_of(meanings, [](const Meaning &meaning) {
    return std::ranges::any_of(pvr::record_fields, [&](const RecordField &field) {
        return field.kind == FieldKind::number && meaning.field == field.name;
    });
}));

std::string number_for_people(const RecordField &field, std::string_view bytes)
{
    const std::uint64_t number = number_in(bytes);
    const auto *const found = std::ranges::find(meanings, std::string_view(field.name), &Meaning::field);
    return found != std::end(meanings) ? found->text(number) : std::to_string(number);
}

std::string list_for_people(const RecordField &, std::string_view bytes)
{
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += number_width)
        text += (at == 0 ? "" : ",") + std::to_string(number_in(bytes.substr(at, number_width)));
    return text;
}

/// Most of them end in long runs of zeros.
std::string bytes_for_people(const RecordField &, std::string_view bytes)
{
    const std::string_view told = bytes.substr(0, bytes.find_last_not_of('\0') + 1);
    if (told.empty())
        return "zeros";
    return hexadecimal(told) + (told.size() < bytes.size() ? " and zeros" : "");
}

// ---- New values.

[[noreturn]] void refuse(const RecordField &field, const std::string &message)
{
    throw CLI::ValidationError(field.name, message);
}

/// The bounds are those of the number's kind; bytes are little-endian.
std::string parsed_bytes(const RecordField &field, std::string_view text, std::size_t width, bool is_signed)
{
    const std::int64_t values = std::int64_t{1} << (8 * width);
    const NumberBounds bounds = is_signed ? NumberBounds{-values / 2, static_cast<std::uint64_t>(values / 2 - 1)}
                                          : NumberBounds{0, static_cast<std::uint64_t>(values - 1)};
    std::uint64_t number = 0;
    if (const std::string complaint = read_whole(text, bounds, number); !complaint.empty())
        refuse(field, complaint);
    std::string bytes(width, '\0');
    std::memcpy(bytes.data(), &number, width);
    return bytes;
}

std::string parsed_list(const RecordField &field, std::string_view text)
{
    std::string bytes;
    const auto count = static_cast<std::size_t>(std::ranges::count(text, ',')) + 1;
    if (count != field.width / number_width)
        refuse(field, "takes " + std::to_string(field.width / number_width) + " numbers with commas between, not " +
                          std::to_string(count));
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t end = std::min(text.find(','), text.size());
        bytes += parsed_bytes(field, text.substr(0, end), number_width, false);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return bytes;
}

std::string parsed_text(const RecordField &field, std::string_view text)
{
    const std::size_t longest = field.width - 1; // and a NUL
    if (text.size() > longest)
        refuse(field, "the text has " + std::to_string(text.size()) + " bytes, and the field holds " +
                          std::to_string(longest));
    if (!is_utf_8(text))
        refuse(field, "the text is not UTF-8");
    std::string bytes(text);
    bytes.resize(field.width, '\0');
    return bytes;
}

std::string parsed_digits(const RecordField &field, std::string_view text)
{
    std::string bytes;
    for (std::size_t at = 0; at + 2 <= text.size(); at += 2) {
        unsigned char byte = 0;
        if (std::from_chars(text.data() + at, text.data() + at + 2, byte, 16).ptr != text.data() + at + 2)
            break;
        bytes += static_cast<char>(byte);
    }
    if (bytes.size() != field.width || text.size() != 2 * field.width)
        refuse(field, "takes " + std::to_string(2 * field.width) + " hexadecimal digits, for " +
                          std::to_string(field.width) + " bytes");
    return bytes;
}

// ---- What is done with a field depends on its kind alone.

struct Kind {
    FieldKind kind;
    Json (*json)(std::string_view bytes);
    std::string (*for_people)(const RecordField &field, std::string_view bytes);
    std::string (*parsed)(const RecordField &field, std::string_view text);
};
constexpr Kind kinds[] = {
    {FieldKind::number, [](std::string_view bytes) -> Json { return number_in(bytes); }, number_for_people,
     [](const RecordField &field, std::string_view text) { return parsed_bytes(field, text, field.width, false); }},
    {FieldKind::signed_number, [](std::string_view bytes) -> Json { return signed_number_in(bytes); },
     [](const RecordField &, std::string_view bytes) { return std::to_string(signed_number_in(bytes)); },
     [](const RecordField &field, std::string_view text) { return parsed_bytes(field, text, field.width, true); }},
    {FieldKind::numbers, list_of_numbers, list_for_people, parsed_list},
    {FieldKind::text, [](std::string_view bytes) -> Json { return made_utf_8(before_nul(bytes)); },
     [](const RecordField &, std::string_view bytes) { return made_utf_8(before_nul(bytes)); }, parsed_text},
    {FieldKind::bytes, [](std::string_view bytes) -> Json { return hexadecimal(bytes); }, bytes_for_people,
     parsed_digits},
};

const Kind &kind_of(const RecordField &field) { return *std::ranges::find(kinds, field.kind, &Kind::kind); }

} // namespace

bool has_meaning(const RecordField &field)
{
    const std::string_view name(field.name);
    return !name.starts_with("opaque_") && !name.starts_with("reserved_");
}

Json field_json(const pvr_file_info_s &record, const RecordField &field)
{
    return kind_of(field).json(bytes_of(record, field));
}

Json field_json(const char *record, const RecordField &field)
{
    return kind_of(field).json({record + field.offset, field.width});
}

bool is_more_than_text(const pvr_file_info_s &record, const RecordField &field)
{
    const std::string_view bytes = bytes_of(record, field);
    const std::string_view text = before_nul(bytes);
    return bytes.find_first_not_of('\0', text.size()) != std::string_view::npos || !is_utf_8(text);
}

std::string field_digits(const pvr_file_info_s &record, const RecordField &field)
{
    return hexadecimal(bytes_of(record, field));
}

std::string field_for_people(const pvr_file_info_s &record, const RecordField &field)
{
    return kind_of(field).for_people(field, bytes_of(record, field));
}

void FieldChange::apply(pvr_file_info_s &record) const
{
    std::memcpy(reinterpret_cast<char *>(&record) + field->offset, bytes.data(), bytes.size());
}

bool FieldChange::is_in(const pvr_file_info_s &record) const { return bytes_of(record, *field) == bytes; }

FieldChange parsed_change(const std::string &text)
{
    FieldChange change = parsed_field(text);
    if (change.field->offset == offsetof(pvr_file_info_s, version))
        refuse(*change.field, "cannot be set: the library stamps it");
    return change;
}

FieldChange parsed_field(const std::string &text)
{
    const std::size_t separator = text.find('=');
    if (separator == std::string::npos)
        throw CLI::ValidationError("CHANGE", '\'' + text + "' is not FIELD=VALUE");
    const std::string_view name = std::string_view(text).substr(0, separator);
    const auto *const field =
        std::ranges::find_if(pvr::record_fields, [&](const RecordField &known) { return name == known.name; });
    if (field == std::end(pvr::record_fields))
        throw CLI::ValidationError("CHANGE", '\'' + std::string(name) + "' is no field of an info file");
    return {field, kind_of(*field).parsed(*field, std::string_view(text).substr(separator + 1))};
}

} // namespace pvrctl
