// Calls that the library answers by itself, without the service.
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/platform.h"
#include "support/private_bus.h"
#include "support/scripted_service.h"

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

using namespace support;

namespace {

struct LocalCall {
    std::string name;
    std::function<int()> call;
    int returned;
    Lines lines;
};

std::ostream &operator<<(std::ostream &out, const LocalCall &row) { return out << row.name; }

/// The entry line of a process whose identity nobody has asked for yet.
std::string unnamed_entry(const std::string &text) { return plain_entry("My master:[0][]" + text); }

/// The same for progress.
std::string unnamed_info(const std::string &text) { return plain_info("My master:[0][]" + text); }

int sportsmode(int held)
{
    int handle = held;
    const int returned = svc_pvr_get_handle_for_sportsmode(3, -4, &handle);
    EXPECT_EQ(handle, held); // never written
    return returned;
}

int highlight_player_flag()
{
    int flag = -77;
    const int returned = svc_pvr_get_highlight_player_flag(&flag);
    EXPECT_EQ(flag, 0);
    return returned;
}

class LocalCalls : public testing::TestWithParam<LocalCall> {};

} // namespace

TEST_P(LocalCalls, AnswerWithoutAskingAnybody)
{
    const LocalCall &row = GetParam();
    set_product(Product::does_not_record);
    EXPECT_EQ(row.call(), row.returned);
    const auto lines = logged();
    ASSERT_EQ(lines.size(), row.lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].function, row.name);
        EXPECT_EQ(std::to_string(lines[i].priority) + " " + lines[i].text, row.lines[i]);
    }
    EXPECT_EQ(support_questions(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    All, LocalCalls,
    testing::Values(
        LocalCall{"svc_pvr_get_handle_for_sportsmode",
                  [] { return sportsmode(9); },
                  0,
                  {unnamed_entry("[first:3][second:-4]"), unnamed_info(" pvr_get_handle finished with handle: [ 9 ]")}},
        LocalCall{"svc_pvr_get_handle_for_sportsmode",
                  [] { return svc_pvr_get_handle_for_sportsmode(0, 0, nullptr); },
                  0,
                  {unnamed_entry("[first:0][second:0]"), unnamed_info(" pvr_get_handle finished with handle: [ 0 ]")}},
        LocalCall{"svc_pvr_play_stop_all", svc_pvr_play_stop_all, 0, {unnamed_entry("")}},
        LocalCall{"svc_pvr_record_pause", [] { return svc_pvr_record_pause(-7); }, 0, {unnamed_entry("[handle:-7]")}},
        LocalCall{"svc_pvr_record_resume", [] { return svc_pvr_record_resume(-7); }, 0, {unnamed_entry("[handle:-7]")}},
        LocalCall{"svc_pvr_is_available_device", svc_pvr_is_available_device, 0, {unnamed_entry("")}},
        LocalCall{
            "svc_pvr_is_highlight_player_available", svc_pvr_is_highlight_player_available, 0, {unnamed_entry("")}},
        LocalCall{"svc_pvr_is_auto_highlight", svc_pvr_is_auto_highlight, 0, {unnamed_entry("")}},
        LocalCall{"svc_pvr_is_notify_game", svc_pvr_is_notify_game, 0, {unnamed_entry("")}},
        LocalCall{"svc_pvr_get_sports_type", svc_pvr_get_sports_type, 0, {unnamed_entry("")}},
        LocalCall{"svc_pvr_is_sports_mode", svc_pvr_is_sports_mode, 0, {unnamed_entry("")}},
        LocalCall{"svc_pvr_send_thumbnail_request", svc_pvr_send_thumbnail_request, 0, {unnamed_entry("")}},
        LocalCall{"svc_pvr_get_bookmark_list", svc_pvr_get_bookmark_list, 0, {unnamed_entry("")}},
        LocalCall{"svc_pvr_get_highlight_player_flag", highlight_player_flag, PS_CALL_METHOD_FAILED, {}},
        LocalCall{"svc_pvr_get_highlight_player_flag",
                  [] { return svc_pvr_get_highlight_player_flag(nullptr); },
                  PS_CALL_METHOD_FAILED,
                  {}},
        LocalCall{"svc_pvr_get_last_bookmark",
                  [] { return svc_pvr_get_last_bookmark("/m/%n.srf"); },
                  0,
                  {unnamed_entry("[uri:/m/%n.srf]"), unnamed_entry("[PS_CALL_METHOD_FAILED]")}},
        LocalCall{"svc_pvr_get_autohighlight_cb",
                  [] { return svc_pvr_get_autohighlight_cb(nullptr); },
                  PS_CALL_METHOD_FAILED,
                  {unnamed_entry(""), unnamed_entry(" * callback:NULL")}},
        // these five answer from the last result, and no call has left one yet
        LocalCall{"svc_pvr_enter_highlight_player",
                  svc_pvr_enter_highlight_player,
                  PS_CALL_METHOD_FAILED,
                  {unnamed_entry("")}},
        LocalCall{"svc_pvr_notify_enter_and_exist_highlight_player",
                  [] { return svc_pvr_notify_enter_and_exist_highlight_player(1); },
                  PS_CALL_METHOD_FAILED,
                  {unnamed_entry("[enter:1]")}},
        LocalCall{"svc_pvr_get_mls_service_id_by_screen_id",
                  [] { return svc_pvr_get_mls_service_id_by_screen_id(2); },
                  PS_CALL_METHOD_FAILED,
                  {unnamed_entry("[screen_id:2]")}},
        LocalCall{"svc_pvr_set_bookmark",
                  [] { return svc_pvr_set_bookmark(nullptr); },
                  PS_CALL_METHOD_FAILED,
                  {unnamed_entry("[uri:(null)]")}},
        LocalCall{"svc_pvr_set_highlight_player_flag",
                  [] { return svc_pvr_set_highlight_player_flag(-3); },
                  PS_CALL_METHOD_FAILED,
                  {unnamed_entry("[flag:-3]")}}),
    [](const auto &info) { return info.param.name + std::to_string(info.index); });

TEST(LocalCallsAfterACall, AnswerFromItsResult)
{
    struct Last {
        int result;
        int where_one_is_success;
        int where_zero_is;
    };
    ScriptedService service;
    for (const auto [result, one, zero] : {Last{1, 0, -2}, Last{0, -2, 0}, Last{-2, -2, -2}, Last{403, -2, -2}}) {
        service.script("play_stop", answers("(" + std::to_string(result) + ",)"));
        ASSERT_EQ(svc_pvr_play_stop(1), PS_SUCCESS);
        EXPECT_EQ(svc_pvr_set_highlight_player_flag(0), one);
        EXPECT_EQ(svc_pvr_enter_highlight_player(), one);
        EXPECT_EQ(svc_pvr_notify_enter_and_exist_highlight_player(0), one);
        EXPECT_EQ(svc_pvr_get_mls_service_id_by_screen_id(0), zero);
        EXPECT_EQ(svc_pvr_set_bookmark(""), zero);
    }
}

TEST(AutohighlightCallback, OnlyLogsWhatItIsCalledWith)
{
    autohighlight_cb callback = nullptr;
    ASSERT_EQ(svc_pvr_get_autohighlight_cb(&callback), PS_SUCCESS);
    ASSERT_NE(callback, nullptr);
    logged();
    unsigned char thumbnail = 0;
    callback(-1, 2, 3'000'000'000, -4, &thumbnail, 5);
    EXPECT_EQ(logged_lines(), Lines{unnamed_entry("[event:-1][iIndex:2][lStartTime:3000000000][lEndTime:-4]"
                                                  "[pThumbnail:PTR][nThumbnailSize:5]")});
}

namespace {

struct SessionCall {
    const char *name;
    int (*call)(std::uint64_t service_id);
};

std::ostream &operator<<(std::ostream &out, const SessionCall &row) { return out << row.name; }

class SessionCalls : public testing::TestWithParam<SessionCall> {};

} // namespace

TEST_P(SessionCalls, MakeTheSessionAndAskTheServiceNothing)
{
    ScriptedService service;
    EXPECT_EQ(GetParam().call(18364758544493064720U), PS_SUCCESS);
    const auto lines = logged();
    EXPECT_EQ(lines.front().text, "[PVR][API][EST][10.8.1]My master:[0][][service_id:18364758544493064720]");
    EXPECT_EQ(lines.front().function, GetParam().name);
    EXPECT_EQ(service.requests(), std::vector<Request>());
    EXPECT_EQ(svc_pvr_service_destroy(), PS_SUCCESS); // there was one
}

TEST_P(SessionCalls, FailWithoutABus)
{
    bus().kill();
    EXPECT_EQ(GetParam().call(1), PS_CALL_METHOD_FAILED);
}

TEST_P(SessionCalls, FailWhereTheProductDoesNotRecord)
{
    set_product(Product::does_not_record);
    EXPECT_EQ(GetParam().call(1), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged().back().text.find("did not support PVR!!") != std::string::npos, true);
}

INSTANTIATE_TEST_SUITE_P(
    All, SessionCalls,
    testing::Values(SessionCall{"svc_pvr_can_show_record_stop_msg", svc_pvr_can_show_record_stop_msg},
                    SessionCall{"svc_pvr_can_show_record_stop_msg_type", svc_pvr_can_show_record_stop_msg_type},
                    SessionCall{"svc_pvr_is_show_record_banner_by_info_key",
                                svc_pvr_is_show_record_banner_by_info_key}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(Retired, CallsAnswerSuccessAndDoNothing)
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    const std::pair<const char *, int (*)(void *)> retired[] = {
        {"svc_pvr_is_recording_available", svc_pvr_is_recording_available},
        {"svc_pvr_get_recording_time", svc_pvr_get_recording_time},
        {"svc_pvr_get_recording_channel", svc_pvr_get_recording_channel},
        {"svc_pvr_is_pvr_operating", svc_pvr_is_pvr_operating},
        {"svc_pvr_is_recording_pause", svc_pvr_is_recording_pause},
        {"svc_pvr_get_rec_default_dev_index", svc_pvr_get_rec_default_dev_index},
        {"svc_pvr_get_rec_device_key_by_index", svc_pvr_get_rec_device_key_by_index},
        {"svc_pvr_get_recording_file_info", svc_pvr_get_recording_file_info},
        {"svc_pvr_remove_recording_info", svc_pvr_remove_recording_info},
    };
#pragma GCC diagnostic pop
    set_product(Product::does_not_record); // not even asked
    for (const auto &[name, call] : retired) {
        char out[16] = "untouched";
        EXPECT_EQ(call(out), PS_SUCCESS);
        EXPECT_STREQ(out, "untouched");
        EXPECT_EQ(call(nullptr), PS_SUCCESS);
        const auto lines = logged();
        ASSERT_EQ(lines.size(), 2U);
        EXPECT_EQ(lines[0].function, name);
        EXPECT_EQ(lines[0].priority, 4);
        EXPECT_EQ(lines[0].text, "[PVR][API][10.8.1]My master:[0][] [DELETED_API please call other replace api]");
    }
    EXPECT_EQ(support_questions(), 0);
}
