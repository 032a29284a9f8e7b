#include "bus/remote_call.h"
#include "pvr_service_api.h"

#include <array>
#include <ostream>

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

const RemoteCall play_start{
    .name = "svc_pvr_play_start",
    .call = [](std::ostream &) { return svc_pvr_play_start(7, "/m/ä %s.srf", -90); },
    .untouched = "",
    .entry = entry(" someione[handle:7][uri:/m/ä %s.srf][start_pos:-90]"),
    .is_checked = true,
    .request = request("play_start", "isi", "(7, '/m/ä %s.srf', -90)"),
    .result = Result::is_published,
    .outcomes = {{"(1,)", 0, "", {}}, {"(0,)", 0, "", {}}, {"(-2,)", 0, "", {}}, {"(403,)", 0, "", {}}},
    .call_with_null_outputs = {},
};

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

const RemoteCall stop_playing{
    .name = "svc_pvr_stop_playing_sync",
    .call = [](std::ostream &) { return svc_pvr_stop_playing_sync("org.example.guide"); },
    .untouched = "",
    .entry = entry("[called_app:org.example.guide]"),
    .is_checked = true,
    .request = request("sync_stop_playing", "si", "('org.example.guide', 1)"),
    .result = Result::is_published,
    .outcomes = {{"(1,)", 1, "", {}}, {"(0,)", 0, "", {}}, {"(-5,)", -5, "", {}}, {"(403,)", 403, "", {}}},
    .call_with_null_outputs = {},
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Playback, RemoteCalls, testing::Values(play_start, get_playback_uri, stop_playing), name_of);

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
