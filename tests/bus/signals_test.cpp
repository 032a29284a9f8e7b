// send_pvr_signal_to_apps over the bus: whom it reaches, in which order, and what the library logs of it.
#include "bus/news.h"
#include "support/little_endian.h"
#include "support/log_capture.h"
#include "support/platform.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <regex>

using namespace support;

namespace {

pvr_service_signal record(int state = 0)
{
    pvr_service_signal signal{};
    signal.result = as_little_endian(-3);
    signal.handle = as_little_endian(7);
    signal.profile_type = as_little_endian(11);
    signal.screen_id = as_little_endian(12);
    std::strcpy(signal.uri, "/m/a.srf");
    signal.current_state = as_little_endian(state);
    signal.opaque_287 = as_little_endian(99);
    return signal;
}

const std::string told_of = "result -3 handle 7 uri /m/a.srf";

class SignalsTest : public testing::Test {
protected:
    SignalsTest() { svc_pvr_service_init(); }

    std::vector<std::string> told(int type, const std::string &text)
    {
        emit_signal(service, type, text);
        return news.take(service);
    }

    /// What the signal path has logged, its priority in front.
    static Lines path_lines()
    {
        Lines lines;
        for (const LoggedLine &line : logged())
            if (line.function == "_pvr_signal_receive")
                lines.push_back(std::to_string(line.priority) + " " +
                                std::regex_replace(line.text.substr(line.text.find("10.8.1]") + 7),
                                                   std::regex("0x[0-9a-f]+"), "PTR"));
        return lines;
    }

    ScriptedService service;
    News news;
};

} // namespace

TEST_F(SignalsTest, ReachTheCallbacksInTheirOrder)
{
    char names[][2] = {"a", "b", "c", "d"};
    svc_pvr_register_signal_cb_in_list(on_signal, names[2]);
    svc_pvr_register_signal_pointer_cb(on_signal_pointer, names[1]);
    svc_pvr_register_signal_cb(on_signal, names[0]);
    EXPECT_EQ(told(3, digits(record(2))), (Lines{"signal " + told_of + " current_state 2 last 99 to a",
                                                 "pointer signal " + told_of + " current_state 2 last 99 to b",
                                                 "signal " + told_of + " current_state 2 last 99 to c"}));
}

TEST_F(SignalsTest, ReachTheListAlone)
{
    svc_pvr_register_signal_cb_in_list(on_signal, nullptr);
    logged();
    EXPECT_EQ(told(1, digits(record())), (Lines{"signal " + told_of + " last 99"}));
    const Lines lines = path_lines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_TRUE(lines[0].starts_with("4 Receive signal from :1.")) << lines[0];
    EXPECT_TRUE(lines[0].ends_with("with name[send_pvr_signal_to_apps] and proxy[PTR], signal_cb_func[(nil)] "
                                   "signal_pointer_cb_func[(nil)]"))
        << lines[0];
    EXPECT_EQ(lines[2], "4 signal_cb_func[(nil)] is null, so don't call signal_cb_func");
}

TEST_F(SignalsTest, AreNotEvenDecodedWhenNobodyListens)
{
    svc_pvr_register_result_pvr_cb(on_result, nullptr);
    logged();
    EXPECT_EQ(told(1, "no digits at all"), Lines());
    EXPECT_EQ(path_lines(), Lines());
}

TEST_F(SignalsTest, LogTheNameOfTheStateThatBelongsToTheirType)
{
    svc_pvr_register_signal_cb(on_signal, nullptr);
    const struct {
        int type, state;
        const char *name, *state_name;
    } cases[] = {
        {1, 2, "PS_SIGNAL_TYPE_RECORD_STATE_CHANGE", "PS_RECORD_STATE_REC"},
        {3, 2, "PS_SIGNAL_TYPE_PLAY_STATE_CHANGE", "PLAY_STATE_PAUSE"},
        {3, 26, "PS_SIGNAL_TYPE_PLAY_STATE_CHANGE", ""},
        {14, 2, "PS_SIGNAL_TYPE_THUMB_DONE", "N/A"},
        {18, 2, "PS_SIGNAL_TYPE_NOTIFY_DEMUX_READY_FOR_RECORD_START", "N/A"},
    };
    for (const auto &[type, state, name, state_name] : cases) {
        logged();
        EXPECT_EQ(told(type, digits(record(state))).size(), 1U) << type;
        EXPECT_EQ(path_lines()[1], "4 signal_type[" + std::string(name) + "|" + std::to_string(type) +
                                       "] result[-3] handle[7] profile_type[11] screen_id[12] uri[/m/a.srf] "
                                       "current_state[" +
                                       state_name + "]");
    }
}

TEST_F(SignalsTest, OfNoTypeOrTheLastAreLoggedAndDropped)
{
    svc_pvr_register_signal_cb(on_signal, nullptr);
    for (const int type : {0, 20, 21, -1, -2147483647 - 1, 2147483647}) {
        logged();
        EXPECT_EQ(told(type, digits(record())), Lines()) << type;
        EXPECT_EQ(path_lines().size(), 2U) << type;
    }
    EXPECT_EQ(told(19, digits(record())).size(), 1U) << "it has no name and is delivered all the same";
    EXPECT_EQ(told(15, digits(record())).size(), 1U);
}

TEST_F(SignalsTest, OfAnyOtherLengthAreDropped)
{
    svc_pvr_register_signal_cb(on_signal, nullptr);
    const std::string whole = digits(record());
    const std::string texts[] = {"",          "0",          whole.substr(2),         whole.substr(1),
                                 whole + "0", whole + "00", std::string(100000, 'f')};
    for (const std::string &text : texts) {
        logged();
        EXPECT_EQ(told(1, text), Lines()) << text.size();
        EXPECT_EQ(path_lines().back(), "6 buf length[" + std::to_string(text.size()) +
                                           "] is invalid, and it should be [582]. str_buf[" + text.substr(0, 1024) +
                                           "]");
    }
}

TEST_F(SignalsTest, TakeWhateverCharactersTheyAreMadeOf)
{
    svc_pvr_register_signal_cb(on_signal, nullptr);
    EXPECT_EQ(told(1, std::string(582, 'z')), (Lines{"signal"}));
    std::string upper = digits(record());
    std::transform(upper.begin(), upper.end(), upper.begin(), [](unsigned char c) { return std::toupper(c); });
    EXPECT_EQ(told(1, upper), (Lines{"signal " + told_of + " last 99"}));
    pvr_service_signal full = record();
    std::memset(full.uri, 'u', sizeof full.uri);
    logged();
    EXPECT_EQ(told(1, digits(full)), (Lines{"signal result -3 handle 7 uri " + std::string(255, 'u') + " last 99"}));
    EXPECT_NE(path_lines()[1].find("uri[" + std::string(255, 'u') + "]"), std::string::npos)
        << "nobody promises that the field ends in NUL";
}

TEST_F(SignalsTest, CallEachEntryOfTheListInItsOrder)
{
    char names[][2] = {"a", "b", "c", "d", "e"};
    for (auto &name : names)
        // The same function may not stand twice: one of five different ones each.
        switch (name[0]) {
        case 'a':
            svc_pvr_register_signal_cb_in_list([](pvr_service_signal s, void *n) { on_signal(s, n); }, name);
            break;
        case 'b':
            svc_pvr_register_signal_cb_in_list([](pvr_service_signal s, void *n) { on_signal(s, n); }, name);
            break;
        case 'c':
            svc_pvr_register_signal_cb_in_list([](pvr_service_signal s, void *n) { on_signal(s, n); }, name);
            break;
        case 'd':
            svc_pvr_register_signal_cb_in_list([](pvr_service_signal s, void *n) { on_signal(s, n); }, name);
            break;
        default:
            svc_pvr_register_signal_cb_in_list(on_signal, name);
        }
    const Lines lines = told(7, digits(record()));
    ASSERT_EQ(lines.size(), 5U);
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(lines[i].back(), names[i][0]);
}

TEST_F(SignalsTest, GoOnWithoutWhatACallbackHasTakenBack)
{
    svc_pvr_register_signal_cb(on_signal, nullptr);
    svc_pvr_register_signal_pointer_cb(on_signal_pointer, nullptr);
    svc_pvr_register_signal_cb_in_list(on_signal, nullptr);
    set_reaction([] {
        svc_pvr_unregister_signal_pointer_cb(on_signal_pointer);
        svc_pvr_unregister_signal_cb_in_list(on_signal);
    });
    EXPECT_EQ(told(1, digits(record())).size(), 1U);
}

TEST_F(SignalsTest, GoOnWhenACallbackGivesUpTheSession)
{
    svc_pvr_register_signal_cb(on_signal, nullptr);
    svc_pvr_register_signal_cb_in_list(on_signal, nullptr);
    set_reaction([] { svc_pvr_service_destroy(); });
    EXPECT_EQ(told(1, digits(record())).size(), 2U);
}

TEST_F(SignalsTest, OfAnotherNameAreIgnored)
{
    svc_pvr_register_signal_cb(on_signal, nullptr);
    service.emit("send_pvr_signal_to_app", "(int32 1, '" + digits(record()) + "')");
    service.emit("send_pvr_signal_to_apps2", "(int32 1, '" + digits(record()) + "')");
    service.emit("SEND_PVR_SIGNAL_TO_APPS", "(int32 1, '" + digits(record()) + "')");
    EXPECT_EQ(news.take(service), Lines());
}
