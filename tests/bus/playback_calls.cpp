#include "bus/remote_call.h"
#include "pvr_service_api.h"

#include <array>
#include <cstdint>
#include <ostream>
#include <utility>

using namespace support;
using Result = RemoteCall::Result;

namespace {

constexpr int untouched_count = -77;

/// Lists into a buffer of 4 with room for length, and prints what is in it.
auto list_handles(int length)
{
    return [length](std::ostream &outputs) {
        std::array<int, 4> list{-1, -1, -1, -1};
        int count = untouched_count;
        const int returned = svc_pvr_get_handle_for_record(list.data(), length, &count);
        outputs << count << ":";
        for (const int handle : list)
            outputs << " " << handle;
        return returned;
    };
}

RemoteCall list_row(int length, std::vector<Outcome> outcomes)
{
    return {
        .name = "svc_pvr_get_handle_for_record",
        .call = list_handles(length),
        .untouched = "-77: -1 -1 -1 -1",
        .entry = entry("[length:" + std::to_string(length) + "]"),
        .is_checked = true,
        .request = request("get_handle_for_record", "", "()"),
        .result = Result::is_the_answer,
        .outcomes = std::move(outcomes),
        .call_with_null_outputs = [length] { return svc_pvr_get_handle_for_record(nullptr, length, nullptr); },
    };
}

std::string element(int index, int value)
{
    return plain_info("index[" + std::to_string(index) + "] value[" + std::to_string(value) + "]");
}

std::string counted(int count) { return detail("num_of_list : " + std::to_string(count) + " "); }

Outcome uri_outcome(const std::string &uri, const std::string &copied)
{
    return {"('" + uri + "',)", 0, copied, {info(" Done")}};
}

const std::string letters(std::size_t count) { return std::string(count, 'u'); }

constexpr std::uint64_t beyond_63_bits = 0x8000'0001'0000'0002U; // above 2^32 and 2^63 at once

/// A call that succeeds whatever the service's result is, and writes nothing.
RemoteCall control(const std::string &name, std::function<int()> call, const std::string &entry_text, Request request,
                   const Lines &lines = {})
{
    return {
        .name = name,
        .call = [call = std::move(call)](std::ostream &) { return call(); },
        .untouched = "",
        .entry = entry(entry_text),
        .is_checked = true,
        .request = std::move(request),
        .result = Result::is_published,
        .outcomes = {{"(1,)", 0, "", lines}, {"(0,)", 0, "", lines}, {"(-2,)", 0, "", lines}, {"(403,)", 0, "", lines}},
        .call_with_null_outputs = {},
    };
}

// clang-format off
const std::vector<RemoteCall> controls{
    control("svc_pvr_release_handle", [] { return svc_pvr_release_handle(-7); },
            "[handle:-7]", request("release_handle", "i", "(-7,)")),
    control("svc_pvr_play_start", [] { return svc_pvr_play_start(7, "/m/ä %s.srf", -90); },
            " someione[handle:7][uri:/m/ä %s.srf][start_pos:-90]", request("play_start", "isi", "(7, '/m/ä %s.srf', -90)")),
    control("svc_pvr_play_stop", [] { return svc_pvr_play_stop(7); },
            " someione[handle:7]", request("play_stop", "i", "(7,)")),
    control("svc_pvr_play_pause", [] { return svc_pvr_play_pause(7); },
            " someione[handle:7]", request("play_pause", "i", "(7,)")),
    control("svc_pvr_play_resume", [] { return svc_pvr_play_resume(7); },
            " someione[handle:7]", request("play_resume", "i", "(7,)")),
    control("svc_pvr_play_forward", [] { return svc_pvr_play_forward(7, 3); },
            " someione[handle:7][forward_type:3]", request("play_forward", "ii", "(7, 3)")),
    control("svc_pvr_play_rewind", [] { return svc_pvr_play_rewind(7, -3); },
            " someione[handle:7][rewind_type:-3]", request("play_rewind", "ii", "(7, -3)")),
    control("svc_pvr_play_skip", [] { return svc_pvr_play_skip(7, 1, -20, 300); },
            " someione[handle:7][skip_type:1][skip_pos:-20][rate:300]", request("play_skip", "iiii", "(7, 1, -20, 300)")),
    control("svc_pvr_step_frame", [] { return svc_pvr_step_frame(7); },
            " someione[handle:7]", request("step_frame", "i", "(7,)")),
    control("svc_pvr_play_stop_to_dtv", [] { return svc_pvr_play_stop_to_dtv(7); },
            " someione[handle:7]", request("play_stop_to_dtv", "i", "(7,)")),
    control("svc_pvr_play_pause_by_service_id", [] { return svc_pvr_play_pause_by_service_id(beyond_63_bits); },
            "[service_id:9223372041149743106]", request("play_pause_by_service_id", "t", "(uint64 9223372041149743106,)")),
    control("svc_pvr_play_resume_by_service_id", [] { return svc_pvr_play_resume_by_service_id(beyond_63_bits); },
            "[service_id:9223372041149743106]", request("play_resume_by_service_id", "t", "(uint64 9223372041149743106,)")),
    control("svc_pvr_play_stop_by_uri", [] { return svc_pvr_play_stop_by_uri("/m/%n.srf"); },
            "[uri:/m/%n.srf]", request("play_stop_by_uri", "s", "('/m/%n.srf',)"),
            {info(" Method: svc_pvr_play_stop_by_uri call finish.")}),
    control("svc_pvr_stop_playing_and_recording", [] { return svc_pvr_stop_playing_and_recording(7, -1); },
            "[handle:7][set_source:-1]", request("stop_playing_and_recording", "ii", "(7, -1)")),
};
// clang-format on

/// A call that has the service issue a handle.
RemoteCall issuing(const std::string &name, int (*call)(int *handle), const std::string &method,
                   const std::string &logged_name)
{
    const auto outcome = [&](int handle, int result) {
        const std::string text = std::to_string(handle);
        return Outcome{"(" + text + ", " + std::to_string(result) + ")",
                       0,
                       text,
                       {info(" " + logged_name + " finished with handle: [ " + text + " ]")}};
    };
    return {
        .name = name,
        .call =
            [call](std::ostream &outputs) {
                int handle = -77;
                const int returned = call(&handle);
                outputs << handle;
                return returned;
            },
        .untouched = "-77",
        .entry = entry(""),
        .is_checked = true,
        .request = request(method, "", "()"),
        .result = Result::is_published,
        .outcomes = {outcome(5, 1), outcome(0, 0), outcome(-1, -2), outcome(2147483647, 403)},
        .call_with_null_outputs = [call] { return call(nullptr); },
    };
}

const RemoteCall get_playback_uri{
    .name = "svc_pvr_get_playback_uri_by_handle",
    .call =
        [](std::ostream &outputs) {
            std::array<char, 256> uri;
            uri.fill('#');
            const int returned = svc_pvr_get_playback_uri_by_handle(3, uri.data());
            outputs << text_of(uri.data(), uri.size());
            EXPECT_EQ(uri.back(), '#'); // never beyond 255
            return returned;
        },
    .untouched = std::string(256, '#'),
    .entry = entry("[handle:3]"),
    .is_checked = true,
    .request = request("get_playback_uri_by_handle", "i", "(3,)"),
    .result = Result::is_the_answer,
    .outcomes = {uri_outcome("/m/a.srf", "/m/a.srf"), uri_outcome("", ""), uri_outcome("%n%s", "%n%s"),
                 uri_outcome(letters(254), letters(254)), uri_outcome(letters(255), letters(254)),
                 uri_outcome(letters(300), letters(254)),
                 uri_outcome(letters(253) + "ä", letters(253) + "\xc3")}, // a cut may split a character
    .call_with_null_outputs = [] { return svc_pvr_get_playback_uri_by_handle(3, nullptr); },
};

RemoteCall stopping(const std::string &name, std::function<int()> call, const std::string &entry_text, int set_source)
{
    return {
        .name = name,
        .call = [call = std::move(call)](std::ostream &) { return call(); },
        .untouched = "",
        .entry = entry("[called_app:org.example.guide]" + entry_text),
        .is_checked = true,
        .request = request("sync_stop_playing", "si", "('org.example.guide', " + std::to_string(set_source) + ")"),
        .result = Result::is_published,
        .outcomes = {{"(1,)", 1, "", {}}, {"(0,)", 0, "", {}}, {"(-5,)", -5, "", {}}, {"(403,)", 403, "", {}}},
        .call_with_null_outputs = {},
    };
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Controls, RemoteCalls, testing::ValuesIn(controls), name_of);

INSTANTIATE_TEST_SUITE_P(
    Playback, RemoteCalls,
    testing::Values(issuing("svc_pvr_get_handle", svc_pvr_get_handle, "get_handle", "pvr_get_handle"),
                    issuing("svc_pvr_get_handle_for_playback", svc_pvr_get_handle_for_playback,
                            "get_handle_for_playback", "svc_pvr_get_handle_for_playback"),
                    get_playback_uri,
                    stopping(
                        "svc_pvr_stop_playing_sync", [] { return svc_pvr_stop_playing_sync("org.example.guide"); }, "",
                        1),
                    stopping(
                        "svc_pvr_stop_playing_sync_ex",
                        [] { return svc_pvr_stop_playing_sync_ex("org.example.guide", -4); }, "[set_source:-4]", -4)),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    PlaybackLists, RemoteCalls,
    testing::Values(
        list_row(-1, {{"(@ai [5, 6], 2)", 0, "2: -1 -1 -1 -1", {counted(2), element(0, 5)}}}),
        list_row(0, {{"(@ai [5, 6], 2)", 0, "2: -1 -1 -1 -1", {counted(2), element(0, 5)}}}),
        list_row(1, {{"(@ai [5, 6], 2)", 0, "2: 5 -1 -1 -1", {counted(2), element(0, 5), element(1, 6)}}}),
        list_row(2, {{"(@ai [5, 6], 2)", 0, "2: 5 6 -1 -1", {counted(2), element(0, 5), element(1, 6)}}}),
        list_row(4, {{"(@ai [5, 6], 2)", 0, "2: 5 6 -1 -1", {counted(2), element(0, 5), element(1, 6)}},
                     {"(@ai [], 3)", 0, "3: -1 -1 -1 -1", {counted(3)}},
                     {"(@ai [5, 6], 100000)", 0, "100000: 5 6 -1 -1", {counted(100000), element(0, 5), element(1, 6)}},
                     {"(@ai [5, 6], 0)", 0, "0: -1 -1 -1 -1", {counted(0)}},
                     {"(@ai [5, 6], -1)", 0, "-1: -1 -1 -1 -1", {counted(-1)}},
                     {"(@ai [5, 6], 1)", 0, "1: 5 6 -1 -1", {counted(1), element(0, 5), element(1, 6)}}})),
    [](const auto &info) { return "Room" + std::to_string(info.index); });
