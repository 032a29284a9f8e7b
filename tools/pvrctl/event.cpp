#include "event.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <glib.h>
#include <initializer_list>
#include <memory>
#include <pvr_events.h>

#include "events/names.h"
#include "recordings.h"
#include "states.h"

namespace pvrctl {
namespace {

constexpr int microseconds = 1000000;

std::optional<int> code_named(const pvr::NamedCode *table, const std::string &name)
{
    for (; table->name != nullptr; ++table)
        if (table->name == name)
            return table->value;
    return std::nullopt;
}

std::string name_of(const pvr::NamedCode *table, int code) { return pvr::_get_pvr_macro_name(table, code); }

Json code_json(const pvr::NamedCode *table, int code)
{
    const std::string name = name_of(table, code);
    return {{"code", code}, {"name", name.empty() ? Json() : Json(name)}};
}

/// The name, or else the number.
std::string code_text(const pvr::NamedCode *table, int code, const char *what)
{
    const std::string name = name_of(table, code);
    return name.empty() ? std::string(what) + ' ' + std::to_string(code) : name;
}

/// The texts of the records need not end in NUL, and are cut by bytes.
template <std::size_t size>
std::string field_text(const char (&field)[size])
{
    const std::unique_ptr<char, decltype(&g_free)> valid(
        g_utf8_make_valid(field, static_cast<gssize>(strnlen(field, size))), &g_free);
    return valid.get();
}

template <std::size_t size>
std::string digits_of(const std::uint8_t (&bytes)[size])
{
    std::string digits;
    for (const std::uint8_t byte : bytes) {
        std::array<char, 3> two{};
        std::snprintf(two.data(), two.size(), "%02x", byte);
        digits += two.data();
    }
    return digits;
}

/// A state whose enumeration nobody tells.
Json nameless_json(int code) { return {{"code", code}, {"name", Json()}}; }

Json signal_state_json(int type, int state)
{
    if (type == PS_SIGNAL_TYPE_RECORD_STATE_CHANGE)
        return record_state_json(state);
    return type == PS_SIGNAL_TYPE_PLAY_STATE_CHANGE ? play_state_json(state) : nameless_json(state);
}

std::string signal_state_text(int type, int state)
{
    if (type == PS_SIGNAL_TYPE_RECORD_STATE_CHANGE)
        return record_state_text(state);
    return type == PS_SIGNAL_TYPE_PLAY_STATE_CHANGE ? play_state_text(state) : "";
}

/// The methods whose results carry a state of playing.
bool is_control_of_playback(int method) { return method >= PS_PLAY_START && method <= PS_PLAY_STOP; }

/// Parts that say something, with commas between.
std::string joined(std::initializer_list<std::string> parts)
{
    std::string text;
    for (const std::string &part : parts)
        if (!part.empty())
            text += (text.empty() ? "" : ", ") + part;
    return text;
}

/// "handle 1", and nothing for 0, which stands for what a record does not carry.
template <typename Number>
std::string unless_zero(const char *what, Number number)
{
    return number != 0 ? std::string(what) + ' ' + std::to_string(number) : "";
}

} // namespace

std::string in_utc(std::int64_t time)
{
    const auto seconds = static_cast<std::time_t>(time / microseconds);
    std::tm utc{};
    std::array<char, 32> date{};
    gmtime_r(&seconds, &utc);
    std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &utc);
    std::array<char, 16> fraction{};
    std::snprintf(fraction.data(), fraction.size(), ".%06dZ", static_cast<int>(time % microseconds));
    return std::string(date.data()) + fraction.data();
}

std::string on_the_clock(std::int64_t time)
{
    std::array<char, 16> fraction{};
    std::snprintf(fraction.data(), fraction.size(), ".%03d", static_cast<int>(time % microseconds / 1000));
    return local_time(time / microseconds) + fraction.data();
}

std::optional<int> signal_type_named(const std::string &name) { return code_named(pvr::ps_signal_type_e_str, name); }
std::optional<int> method_named(const std::string &name) { return code_named(pvr::ps_method_e_str, name); }

Event signal_event(int type, const pvr_service_signal &signal)
{
    const int state = signal.current_state;
    const std::string uri = field_text(signal.uri);
    return {"signal",
            {{"type", code_json(pvr::ps_signal_type_e_str, type)},
             {"opaque_0", int{signal.opaque_0}},
             {"result", int{signal.result}},
             {"handle", int{signal.handle}},
             {"opaque_12", digits_of(signal.opaque_12)},
             {"profile_type", int{signal.profile_type}},
             {"screen_id", int{signal.screen_id}},
             {"uri", uri},
             {"current_state", signal_state_json(type, state)},
             {"opaque_287", int{signal.opaque_287}}},
            code_text(pvr::ps_signal_type_e_str, type, "type") + "  " +
                joined({unless_zero("handle", int{signal.handle}), signal_state_text(type, state),
                        unless_zero("result", int{signal.result}), uri})};
}

Event result_event(const pvr_service_result &result)
{
    const int method = result.method;
    const int state = result.current_state;
    const bool has_play_state = is_control_of_playback(method);
    const std::string path = field_text(result.mnt_path);
    return {"result",
            {{"method", code_json(pvr::ps_method_e_str, method)},
             {"result", int{result.result}},
             {"handle", int{result.handle}},
             {"mnt_path", path},
             {"detail_result", int{result.detail_result}},
             {"duration", int{result.duration}},
             {"service_id", std::uint64_t{result.service_id}},
             {"current_state", has_play_state ? play_state_json(state) : nameless_json(state)}},
            code_text(pvr::ps_method_e_str, method, "method") + "  " +
                joined({unless_zero("handle", int{result.handle}), "result " + std::to_string(int{result.result}),
                        has_play_state ? play_state_text(state) : "",
                        unless_zero("channel", std::uint64_t{result.service_id}),
                        unless_zero("duration", int{result.duration}), unless_zero("detail", int{result.detail_result}),
                        path})};
}

Event other_event(const pvr_result_third &third)
{
    const int method = third.third_part_method;
    const int command = third.third_part_command;
    return {"other",
            {{"third_part_method", code_json(pvr::ps_third_part_method_e_str, method)},
             {"third_part_command", code_json(pvr::ps_third_part_command_e_str, command)},
             {"result", int{third.result}},
             {"service_result", int{third.service_result}},
             {"service_id", std::uint64_t{third.service_id}},
             {"UID", int{third.UID}}},
            code_text(pvr::ps_third_part_method_e_str, method, "method") + "  " +
                joined({code_text(pvr::ps_third_part_command_e_str, command, "command"),
                        "result " + std::to_string(int{third.result}),
                        unless_zero("the service's", int{third.service_result}),
                        unless_zero("channel", std::uint64_t{third.service_id}), unless_zero("UID", int{third.UID})})};
}

Event service_state_event(int state) { return {"service_state", {{"state", state}}, std::to_string(state)}; }

Event owner_event(const char *kind, const std::string &owner) { return {kind, {{"service", owner}}, owner}; }

void Stamp::show(const Output &output, const Event &event)
{
    const std::int64_t now = g_get_real_time();
    Json data{{"seq", ++seq_}, {"wall", in_utc(now)}, {"monotonic_us", g_get_monotonic_time()}, {"kind", event.kind}};
    data.update(event.fields);
    output.show_line(data, printable(on_the_clock(now) + "  " + event.kind + "  " + event.text));
}

} // namespace pvrctl
