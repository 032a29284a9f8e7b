// What pvrctl call makes of one parameter of a C function, by its type: how words of the command line become what the
// function takes, and how what it hands out is shown.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <pvr_events.h>
#include <pvr_records.h>
#include <pvr_rights.h>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "arguments.h"
#include "event.h"
#include "files/record_layout.h"
#include "output.h"

namespace pvrctl {

/// Takes the events of a callback; the user data that it is registered with.
using EventSink = std::function<void(const Event &)>;

/// What a call has handed out, in both forms.
struct Handed {
    Json data = Json::object();
    std::vector<Row> rows;

    /// Null stands for what the function has not written.
    void add(const std::string &name, Json value);
};

/// A whole number, in decimal or with 0x. Throws a usage Failure for what is none, or does not fit.
std::uint64_t parsed_whole(const std::string &name, const std::string &text, NumberBounds bounds);

/// Bytes from two hexadecimal digits each.
std::string parsed_hexadecimal(const std::string &name, const std::string &text);

/// The record from "FIELD=VALUE" words, or from one word that is a JSON object; what is not named is 0.
pvr_file_info_s parsed_info(const std::string &name, std::span<const std::string> words);

/// The name and the fields of a record of the library.
template <typename T>
struct RecordType;
template <typename T>
concept Record = requires
{
    RecordType<T>::name;
};

#define RECORD_TYPE(record)                                                                                            \
    template <>                                                                                                        \
    struct RecordType<record> {                                                                                        \
        static constexpr char name[] = #record;                                                                        \
        static std::span<const pvr::RecordField> fields();                                                             \
    }
RECORD_TYPE(channel_info);
RECORD_TYPE(device_info);
RECORD_TYPE(expired_content_section);
RECORD_TYPE(pvr_file_info_s);
RECORD_TYPE(pvr_recording_info);
RECORD_TYPE(rec_dev_capacity);
RECORD_TYPE(yuv_info);
#undef RECORD_TYPE

Json record_as_json(const char *record, std::span<const pvr::RecordField> fields);

// ---- The types by which the adapters in call_table.cpp tell what C leaves to the documentation.

/// A list that the function fills; the adapter makes the room.
template <typename T>
using Listed = std::vector<T> &;
/// A block of bytes, given or handed out.
struct BytesGiven {
    std::string bytes;
};
struct BytesHanded {
    std::string bytes;
};
/// A parameter that follows from another one.
struct Implied {};

// ---- The way of each type. Those that are given have take(), those that hand something out show().

template <typename T>
struct Slot;

template <std::integral T>
struct Slot<T> {
    T number = 0;

    void take(const std::string &name, const std::string &word)
    {
        using Bounds = std::numeric_limits<T>;
        number = static_cast<T>(parsed_whole(
            name, word, {static_cast<std::int64_t>(Bounds::min()), static_cast<std::uint64_t>(Bounds::max())}));
    }
    T pass(EventSink &) noexcept { return number; }
};

template <>
struct Slot<const char *> {
    std::string text;

    void take(const std::string &, const std::string &word) { text = word; }
    const char *pass(EventSink &) noexcept { return text.c_str(); }
};

/// A number that the function may leave alone: it starts as one that nothing is likely to tell.
template <std::integral T>
struct Slot<T *> {
    static constexpr T unwritten = static_cast<T>(sizeof(T) > 1 ? 0xa5b6c7d8a5b6c7d8 : 0);
    T number = unwritten;

    T *pass(EventSink &) noexcept { return &number; }
    void show(const std::string &name, Handed &handed) const
    {
        const bool is_written = sizeof(T) == 1 || number != unwritten;
        handed.add(name, is_written ? Json(number) : Json());
    }
};

/// A text of 255 or 256 bytes.
template <>
struct Slot<char *> {
    static constexpr char unwritten = '\xa5'; ///< as all of it: every text that is written has a NUL
    std::array<char, 256> text;

    Slot() { text.fill(unwritten); }
    char *pass(EventSink &) noexcept { return text.data(); }
    void show(const std::string &name, Handed &handed) const;
};

template <Record T>
struct Slot<T *> {
    T record{};

    T *pass(EventSink &) noexcept { return &record; }
    void show(const std::string &name, Handed &handed) const
    {
        handed.add(name, record_as_json(reinterpret_cast<const char *>(&record), RecordType<T>::fields()));
    }
};

/// The one record that is given: all words from there on.
template <>
struct Slot<const pvr_file_info_s &> {
    static constexpr bool takes_rest = true;
    pvr_file_info_s record{};

    void take(const std::string &name, std::span<const std::string> words) { record = parsed_info(name, words); }
    const pvr_file_info_s &pass(EventSink &) noexcept { return record; }
};

template <typename T>
struct Slot<std::vector<T> &> {
    std::vector<T> list;

    std::vector<T> &pass(EventSink &) noexcept { return list; }
    void show(const std::string &name, Handed &handed) const
    {
        Json elements = Json::array();
        for (const T &element : list) {
            if constexpr (Record<T>)
                elements.push_back(record_as_json(reinterpret_cast<const char *>(&element), RecordType<T>::fields()));
            else
                elements.push_back(element);
        }
        handed.add(name, std::move(elements));
    }
};

template <>
struct Slot<const BytesGiven &> {
    BytesGiven given;

    void take(const std::string &name, const std::string &word) { given.bytes = parsed_hexadecimal(name, word); }
    const BytesGiven &pass(EventSink &) noexcept { return given; }
};

template <>
struct Slot<BytesHanded &> {
    BytesHanded handed_out;

    BytesHanded &pass(EventSink &) noexcept { return handed_out; }
    void show(const std::string &name, Handed &handed) const { handed.add(name, hexadecimal(handed_out.bytes)); }
};

template <>
struct Slot<Implied> {
    Implied pass(EventSink &) noexcept { return {}; }
};

/// User data, and what retired functions ignore.
template <>
struct Slot<void *> {
    void *pass(EventSink &sink) noexcept { return &sink; }
};

/// Whether a function was handed out, which is not called.
template <>
struct Slot<autohighlight_cb *> {
    autohighlight_cb callback = nullptr;

    autohighlight_cb *pass(EventSink &) noexcept { return &callback; }
    void show(const std::string &name, Handed &handed) const { handed.add(name, callback != nullptr); }
};

/// pvrctl's own callback of a type, which hands events to the sink.
template <typename Callback>
Callback own_callback() noexcept;
template <>
pvr_result_cb own_callback<pvr_result_cb>() noexcept;
template <>
pvr_result_point_cb own_callback<pvr_result_point_cb>() noexcept;
template <>
pvr_result_third_cb own_callback<pvr_result_third_cb>() noexcept;
template <>
pvr_signal_cb own_callback<pvr_signal_cb>() noexcept;
template <>
pvr_signal_point_cb own_callback<pvr_signal_point_cb>() noexcept;
template <>
pvr_state_cb own_callback<pvr_state_cb>() noexcept;

template <typename... Parameters>
struct Slot<void (*)(Parameters...)> {
    using Callback = void (*)(Parameters...);
    Callback pass(EventSink &) noexcept { return own_callback<Callback>(); }
};

// ---- The types as C spells them, up to the name.

template <typename T>
inline constexpr const char *spelling = nullptr;
template <>
inline constexpr const char *spelling<void> = "void ";
template <>
inline constexpr const char *spelling<char> = "char ";
template <>
inline constexpr const char *spelling<unsigned char> = "unsigned char ";
template <>
inline constexpr const char *spelling<int> = "int ";
template <>
inline constexpr const char *spelling<unsigned> = "unsigned ";
template <>
inline constexpr const char *spelling<autohighlight_cb> = "autohighlight_cb ";
template <>
inline constexpr const char *spelling<pvr_result_cb> = "pvr_result_cb ";
template <>
inline constexpr const char *spelling<pvr_result_point_cb> = "pvr_result_point_cb ";
template <>
inline constexpr const char *spelling<pvr_result_third_cb> = "pvr_result_third_cb ";
template <>
inline constexpr const char *spelling<pvr_signal_cb> = "pvr_signal_cb ";
template <>
inline constexpr const char *spelling<pvr_signal_point_cb> = "pvr_signal_point_cb ";
template <>
inline constexpr const char *spelling<pvr_state_cb> = "pvr_state_cb ";

template <typename T>
std::string spelled()
{
    if constexpr (std::is_const_v<T>) {
        return "const " + spelled<std::remove_const_t<T>>();
    } else if constexpr (Record<T>) {
        return std::string(RecordType<T>::name) + ' ';
    } else if constexpr (spelling<T> != nullptr) {
        return spelling<T>;
    } else if constexpr (std::is_pointer_v<T>) {
        return spelled<std::remove_pointer_t<T>>() + '*';
    } else {
        static_assert(std::integral<T> && sizeof(T) == sizeof(std::int64_t)); // long, or long long
        return std::is_signed_v<T> ? "int64_t " : "uint64_t ";
    }
}

} // namespace pvrctl
