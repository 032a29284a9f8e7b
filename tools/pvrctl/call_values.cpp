#include "call_values.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstddef>
#include <glib.h>
#include <memory>
#include <string_view>

#include "info_fields.h"

namespace pvrctl {
namespace {

using enum pvr::FieldKind;
using pvr::RecordField;

// clang-format off
#define FIELD(record, member, kind) RecordField{offsetof(record, member), sizeof(record::member), #member, kind}
constexpr RecordField channel_info_fields[] = {
    FIELD(channel_info, major,         signed_number),
    FIELD(channel_info, minor,         signed_number),
    FIELD(channel_info, start_time,    number),
    FIELD(channel_info, end_time,      number),
    FIELD(channel_info, channel_name,  text),
    FIELD(channel_info, program_title, text),
};
constexpr RecordField device_info_fields[] = {
    FIELD(device_info, device_type,  signed_number),
    FIELD(device_info, file_format,  signed_number),
    FIELD(device_info, device_name,  text),
    FIELD(device_info, product_name, text),
    FIELD(device_info, mnt_path,     text),
    FIELD(device_info, total_size,   signed_number),
    FIELD(device_info, avail_size,   signed_number),
};
constexpr RecordField expired_content_section_fields[] = {
    FIELD(expired_content_section, start_time, signed_number),
    FIELD(expired_content_section, end_time,   signed_number),
};
constexpr RecordField pvr_recording_info_fields[] = {
    FIELD(pvr_recording_info, low_word,  number),
    FIELD(pvr_recording_info, high_word, number),
    FIELD(pvr_recording_info, opaque_8,  signed_number),
    FIELD(pvr_recording_info, opaque_12, signed_number),
    FIELD(pvr_recording_info, opaque_16, signed_number),
};
constexpr RecordField rec_dev_capacity_fields[] = {
    FIELD(rec_dev_capacity, available_size, signed_number),
    FIELD(rec_dev_capacity, total_size,     signed_number),
};
constexpr RecordField yuv_info_fields[] = {
    FIELD(yuv_info, color_format, signed_number),
    FIELD(yuv_info, width,        signed_number),
    FIELD(yuv_info, height,       signed_number),
    FIELD(yuv_info, reserved,     bytes),
};
#undef FIELD
// clang-format on

std::string valid_text(std::string_view text)
{
    const std::unique_ptr<char, decltype(&g_free)> valid(
        g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), &g_free);
    return valid.get();
}

/// A value as people read it: texts without quotes, and everything else as JSON has it.
std::string plain_text(const Json &value)
{
    if (value.is_null())
        return "not written";
    return value.is_string() ? value.get<std::string>() : value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

[[noreturn]] void refuse_word(const std::string &name, const std::string &message)
{
    throw Failure(ExitCode::usage, name + ": " + message);
}

/// A member of a JSON object as a word of the command line. What lies within lists and objects is never looked at: it
/// may lie so deep that printing it takes more than the stack.
std::string member_word(const std::string &name, const std::string &field, const Json &value)
{
    const auto is_structured = [](const Json &one) { return one.is_structured(); };
    if (value.is_object() || (value.is_array() && std::any_of(value.begin(), value.end(), is_structured)))
        refuse_word(name, field + " takes a number, a text or a list of numbers, not what is in lists or in an object");
    std::string word;
    if (value.is_array()) {
        for (const Json &element : value)
            word += (word.empty() ? "" : ",") + plain_text(element);
        return field + '=' + word;
    }
    return field + '=' + plain_text(value);
}

} // namespace

std::span<const RecordField> RecordType<channel_info>::fields() { return channel_info_fields; }
std::span<const RecordField> RecordType<device_info>::fields() { return device_info_fields; }
std::span<const RecordField> RecordType<expired_content_section>::fields() { return expired_content_section_fields; }
std::span<const RecordField> RecordType<pvr_file_info_s>::fields() { return pvr::record_fields; }
std::span<const RecordField> RecordType<pvr_recording_info>::fields() { return pvr_recording_info_fields; }
std::span<const RecordField> RecordType<rec_dev_capacity>::fields() { return rec_dev_capacity_fields; }
std::span<const RecordField> RecordType<yuv_info>::fields() { return yuv_info_fields; }

Json record_as_json(const char *record, std::span<const RecordField> fields)
{
    Json data = Json::object();
    for (const RecordField &field : fields)
        data[field.name] = field_json(record, field);
    return data;
}

void Handed::add(const std::string &name, Json value)
{
    if (value.is_object()) {
        for (const auto &[field, member] : value.items())
            rows.push_back({name + '.' + field, plain_text(member)});
    } else {
        rows.push_back({name, plain_text(value)});
    }
    data[name] = std::move(value);
}

void Slot<char *>::show(const std::string &name, Handed &handed) const
{
    const std::string_view bytes(text.data(), text.size());
    const bool is_written = bytes.find_first_not_of(unwritten) != std::string_view::npos;
    handed.add(name, is_written ? Json(valid_text(bytes.substr(0, bytes.find('\0')))) : Json());
}

std::uint64_t parsed_whole(const std::string &name, const std::string &text, NumberBounds bounds)
{
    std::uint64_t number = 0;
    if (const std::string complaint = read_whole(text, bounds, number); !complaint.empty())
        refuse_word(name, complaint);
    return number;
}

std::string parsed_hexadecimal(const std::string &name, const std::string &text)
{
    std::string bytes;
    for (std::size_t at = 0; at + 2 <= text.size(); at += 2) {
        unsigned char byte = 0;
        if (std::from_chars(text.data() + at, text.data() + at + 2, byte, 16).ptr != text.data() + at + 2)
            break;
        bytes += static_cast<char>(byte);
    }
    if (2 * bytes.size() != text.size())
        refuse_word(name, '\'' + text + "' is not two hexadecimal digits for each byte");
    return bytes;
}

pvr_file_info_s parsed_info(const std::string &name, std::span<const std::string> words)
{
    std::vector<std::string> changes(words.begin(), words.end());
    if (words.size() == 1 && words.front().starts_with('{')) {
        const Json object = Json::parse(words.front(), nullptr, false);
        if (!object.is_object())
            refuse_word(name, "what begins with { is not JSON");
        changes.clear();
        for (const auto &[field, value] : object.items())
            changes.push_back(member_word(name, field, value));
    }
    pvr_file_info_s record{};
    for (const std::string &change : changes) {
        try {
            parsed_field(change).apply(record);
        } catch (const CLI::ValidationError &error) {
            refuse_word(name, error.what());
        }
    }
    return record;
}

// ---- Callbacks. What one throws would pass through C, so the sink does not.

namespace {

/// The record of a signal does not have its type.
Event typeless_event(const pvr_service_signal &signal)
{
    constexpr int no_type = -1;
    Event event = signal_event(no_type, signal);
    event.fields.erase("type");
    event.text.erase(0, event.text.find("  ") + 2);
    return event;
}

void hand_on(void *sink, const Event &event) noexcept { (*static_cast<EventSink *>(sink))(event); }

} // namespace

template <>
pvr_result_cb own_callback<pvr_result_cb>() noexcept
{
    return [](pvr_service_result result, void *sink) noexcept { hand_on(sink, result_event(result)); };
}
template <>
pvr_result_point_cb own_callback<pvr_result_point_cb>() noexcept
{
    return [](pvr_service_result *result, void *sink) noexcept { hand_on(sink, result_event(*result)); };
}
template <>
pvr_result_third_cb own_callback<pvr_result_third_cb>() noexcept
{
    return [](pvr_result_third result, void *sink) noexcept { hand_on(sink, other_event(result)); };
}
template <>
pvr_signal_cb own_callback<pvr_signal_cb>() noexcept
{
    return [](pvr_service_signal signal, void *sink) noexcept { hand_on(sink, typeless_event(signal)); };
}
template <>
pvr_signal_point_cb own_callback<pvr_signal_point_cb>() noexcept
{
    return [](pvr_service_signal *signal, void *sink) noexcept { hand_on(sink, typeless_event(*signal)); };
}
template <>
pvr_state_cb own_callback<pvr_state_cb>() noexcept
{
    return [](int state, void *sink) noexcept { hand_on(sink, service_state_event(state)); };
}

} // namespace pvrctl
