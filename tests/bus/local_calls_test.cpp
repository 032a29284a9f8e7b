// Calls that the library answers by itself: no service is there, no session is made, and the platform is
// not asked whether the product records.
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/platform.h"

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
    Playback, LocalCalls,
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
        LocalCall{"svc_pvr_set_highlight_player_flag",
                  [] { return svc_pvr_set_highlight_player_flag(-3); },
                  PS_CALL_METHOD_FAILED, // no call has left a result yet
                  {unnamed_entry("[flag:-3]")}}),
    [](const auto &info) { return info.param.name + std::to_string(info.index); });

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
