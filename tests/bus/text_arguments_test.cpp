// Texts on their way to the service: null is the empty text, and what cannot be sent is refused here.
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/scripted_service.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

using namespace support;

namespace {

struct TextArgument {
    std::string name;
    std::string method;
    int position; ///< of the text among the arguments on the wire, from 1
    std::function<int(const char *text)> call;
    std::string tail; ///< what the text has to end in to be accepted by the call itself
};

std::ostream &operator<<(std::ostream &out, const TextArgument &row) { return out << row.name; }

class TextArguments : public testing::TestWithParam<TextArgument> {
protected:
    void SetUp() override
    {
        service.script(GetParam().method, answers(GetParam().method == "get_product_name" ? "('',)" : "(0,)"));
        ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
        logged();
    }

    ScriptedService service;
};

constexpr std::size_t longest = std::size_t{16} << 20;

} // namespace

TEST_P(TextArguments, AreSentUpToSixteenMebibytes)
{
    const TextArgument &row = GetParam();
    const std::string text = std::string(longest - row.tail.size(), 'x') + row.tail;
    EXPECT_EQ(row.call(text.c_str()), PS_SUCCESS);
    service.wait_for_request();
    const auto requests = service.requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_NE(requests[0].arguments.find("'" + text + "'"), std::string::npos);
}

TEST_P(TextArguments, AreRefusedBeyondSixteenMebibytes)
{
    const TextArgument &row = GetParam();
    const std::string text = std::string(longest + 1 - row.tail.size(), 'x') + row.tail;
    EXPECT_EQ(row.call(text.c_str()), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), failure(" GDBus error: argument " + std::to_string(row.position) + " of " +
                                             row.method + " is longer than 16777216 bytes!!"));
    EXPECT_EQ(service.requests(), std::vector<Request>());
}

TEST_P(TextArguments, AreRefusedWhenTheyAreNotUtf8)
{
    const TextArgument &row = GetParam();
    for (const std::string start : {"\xff", "/m/\xc3", "\xed\xa0\x80", "\xf8\x88\x80\x80\x80"}) {
        logged();
        EXPECT_EQ(row.call((start + row.tail).c_str()), PS_CALL_METHOD_FAILED);
        EXPECT_EQ(logged_lines().back(), failure(" GDBus error: argument " + std::to_string(row.position) + " of " +
                                                 row.method + " is not UTF-8!!"));
    }
    EXPECT_EQ(service.requests(), std::vector<Request>());
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(
    All, TextArguments,
    testing::Values(
        //            function                                       method                        position
        TextArgument{"svc_pvr_play_start",                           "play_start",                        2,
                     [](const char *text) { return svc_pvr_play_start(1, text, 0); }, ""},
        TextArgument{"svc_pvr_play_stop_by_uri",                     "play_stop_by_uri",                  1,
                     [](const char *text) { return svc_pvr_play_stop_by_uri(text); }, ""},
        TextArgument{"svc_pvr_stop_playing_sync",                    "sync_stop_playing",                 1,
                     [](const char *text) { return svc_pvr_stop_playing_sync(text); }, ""},
        TextArgument{"svc_pvr_stop_playing_sync_ex",                 "sync_stop_playing",                 1,
                     [](const char *text) { return svc_pvr_stop_playing_sync_ex(text, 0); }, ""},
        TextArgument{"svc_pvr_start_recording",                      "call_app",                          4,
                     [](const char *text) { return svc_pvr_start_recording(1, 0, text); }, ""},
        TextArgument{"svc_pvr_start_recording_ex",                   "call_app",                          4,
                     [](const char *text) { return svc_pvr_start_recording_ex(1, 0, text, 0); }, ""},
        TextArgument{"svc_pvr_start_timeshift",                      "call_app",                          4,
                     [](const char *text) { return svc_pvr_start_timeshift(1, 0, text); }, ""},
        TextArgument{"svc_pvr_stop_recording",                       "call_app",                          4,
                     [](const char *text) { return svc_pvr_stop_recording(1, 0, text); }, ""},
        TextArgument{"svc_pvr_stop_timeshift",                       "call_app",                          4,
                     [](const char *text) { return svc_pvr_stop_timeshift(1, 0, text); }, ""},
        TextArgument{"svc_pvr_stop_timeshift_without_service_id",    "call_app",                          4,
                     [](const char *text) { return svc_pvr_stop_timeshift_without_service_id(0, text); }, ""},
        TextArgument{"svc_pvr_stop_pvr_sync",                        "sync_stop_pvr",                     2,
                     [](const char *text) { return svc_pvr_stop_pvr_sync(1, text); }, ""},
        TextArgument{"svc_pvr_stop_reocrding_sync",                  "sync_stop_recording",               2,
                     [](const char *text) { return svc_pvr_stop_reocrding_sync(1, text); }, ""},
        TextArgument{"svc_pvr_get_rec_product_name",                 "get_product_name",                  1,
                     [](const char *text) { return svc_pvr_get_rec_product_name(text, nullptr); }, ""},
        TextArgument{"svc_pvr_mkdir",                                "mkdir",                             1,
                     [](const char *text) { return svc_pvr_mkdir(text, 0); }, ""},
        TextArgument{"svc_pvr_delete_record_file",                   "delete_record_file",                1,
                     [](const char *text) { return svc_pvr_delete_record_file(text, nullptr); }, ""},
        TextArgument{"svc_pvr_remove_inf",                           "remove_inf",                        1,
                     [](const char *text) { return svc_pvr_remove_inf(text, 0); }, ".inf"},
        TextArgument{"svc_pvr_is_recording_file",                    "is_recording_file",                 1,
                     [](const char *text) { return svc_pvr_is_recording_file(text, nullptr); }, ""},
        TextArgument{"svc_pvr_check_parent_lock",                    "check_parent_lock",                 1,
                     [](const char *text) { return svc_pvr_check_parent_lock(text, nullptr); }, ""},
        TextArgument{"svc_pvr_make_thumbnail_file",                  "make_thumbnail_file",               1,
                     [](const char *text) { return svc_pvr_make_thumbnail_file(text, 0, 0, 0); }, ""},
        TextArgument{"svc_pvr_set_channel_multilanguage_string",     "set_channel_multilanguage_string",  1,
                     [](const char *text) { return svc_pvr_set_channel_multilanguage_string(text, 0); }, ""},
        TextArgument{"svc_pvr_set_channel_number_string",            "set_channel_number_string",         2,
                     [](const char *text) { return svc_pvr_set_channel_number_string(1, text); }, ""}),
    [](const auto &info) { return info.param.name; });
// clang-format on

TEST(NullTexts, AreSentAsEmptyOnes)
{
    ScriptedService service;
    service.script("play_start", answers("(1,)"));
    service.script("sync_stop_playing", answers("(1,)"));
    EXPECT_EQ(svc_pvr_play_start(1, nullptr, 2), PS_SUCCESS);
    EXPECT_EQ(svc_pvr_stop_playing_sync(nullptr), 1);
    EXPECT_EQ(svc_pvr_stop_pvr_sync(3, nullptr), PS_SUCCESS);
    std::vector<Request> received = service.requests();
    while (received.size() < 3) { // the last one is not waited for
        service.wait_for_request();
        for (Request &late : service.requests())
            received.push_back(late);
    }
    Request last = request("sync_stop_pvr", "ts", "(uint64 3, '')");
    last.is_reply_expected = false;
    EXPECT_EQ(received, (std::vector{request("play_start", "isi", "(1, '', 2)"),
                                     request("sync_stop_playing", "si", "('', 1)"), last}));
}

TEST(NullTexts, ArePrintedAsSuch)
{
    ScriptedService service;
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    logged();
    svc_pvr_play_start(1, nullptr, 2);
    EXPECT_EQ(logged_lines().front(), entry(" someione[handle:1][uri:(null)][start_pos:2]"));
}

TEST(GetRecProductName, RefusesANullMountPath)
{
    ScriptedService service;
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    logged();
    char name[255] = "untouched";
    EXPECT_EQ(svc_pvr_get_rec_product_name(nullptr, name), PS_CALL_METHOD_FAILED);
    EXPECT_STREQ(name, "untouched");
    EXPECT_EQ(logged_lines(),
              (Lines{entry("[mnt_path:(null)]"), detail(support_line(1)), failure(" The mnt_path is null")}));
    EXPECT_EQ(service.requests(), std::vector<Request>());
}

TEST(RemoveInf, RefusesAPathThatIsNoRecording)
{
    ScriptedService service;
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    for (const char *path : {static_cast<const char *>(nullptr), "", "inf", "/m/a.INF", "/m/a.bak", "/m/inf"}) {
        logged();
        EXPECT_EQ(svc_pvr_remove_inf(path, 0), PS_CALL_METHOD_FAILED);
        const std::string shown = path != nullptr ? path : "(null)";
        EXPECT_EQ(logged_lines().back(), failure(" file_path[" + shown + "] is invalid pvr inf file"));
    }
    EXPECT_EQ(service.requests(), std::vector<Request>());
}
