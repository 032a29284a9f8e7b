// The service on a real bus: its interface, handles and playback, and the signals that tell of it.
#include "peer.h"
#include "pvr_service_api.h"
#include "support/temporary_folder.h"
#include "test_programme.h"

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gio/gio.h>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <sys/stat.h>

using namespace simulator_test;

namespace {

class Service : public testing::Test {
protected:
    Service()
    {
        simulator::write_test_programme(recording, 100);
        simulator::write_test_programme(short_recording, 1);
        const timespec times[] = {{1'000'000'100, 0}, {1'000'000'100, 0}};
        utimensat(AT_FDCWD, recording.c_str(), times, 0);
    }

    static std::string quoted(const std::string &text) { return "'" + text + "'"; }
    std::string start(const std::string &uri, int second)
    {
        return peer.call("play_start", "(1, " + quoted(uri) + ", " + std::to_string(second) + ")");
    }
    /// Has everything arrive that was sent so far: it is sent behind the answer to the call that caused it.
    void settle() { EXPECT_EQ(peer.call("is_support_pvr"), "(1,)"); }
    /// A playback of the recording on handle 1 that stands at a second; the signals of that are taken.
    void pause_at(int second)
    {
        EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
        EXPECT_EQ(start(recording, 0), "(0,)");
        EXPECT_EQ(peer.call("play_pause", "(1,)"), "(0,)");
        EXPECT_EQ(peer.call("play_skip", "(1, 0, " + std::to_string(second) + ", 0)"), "(0,)");
        settle();
        peer.signals();
    }

    support::TemporaryFolder folder;
    const std::string recording = folder / "first.srf";
    const std::string short_recording = folder / "short.srf";
    Simulator simulator;
    Peer peer;
};

/// The lines of tests/abi/wire.txt, single-spaced.
Lines wire_table()
{
    std::ifstream file(PVR_WIRE_TABLE);
    Lines lines;
    for (std::string line; std::getline(file, line);)
        if (!line.empty() && line.front() != '#')
            lines.push_back(std::regex_replace(line, std::regex(" +"), " "));
    return lines;
}

std::string arguments(GDBusArgInfo **infos)
{
    std::string text;
    for (; infos != nullptr && *infos != nullptr; ++infos)
        text += (text.empty() ? "" : " ") + std::string((*infos)->name) + ":" + (*infos)->signature;
    return "(" + text + ")";
}

std::string changed(const std::string &state, const std::string &uri)
{
    return "PS_SIGNAL_TYPE_PLAY_STATE_CHANGE of 1: " + state + " " + uri;
}

} // namespace

TEST_F(Service, ShowsTheWholeInterfaceInItsOrderAndNothingElse)
{
    GDBusNodeInfo *node = g_dbus_node_info_new_for_xml(peer.introspection().c_str(), nullptr);
    ASSERT_NE(node, nullptr);
    const GDBusInterfaceInfo *interface = g_dbus_node_info_lookup_interface(node, "org.vexan.tv.pvr");
    ASSERT_NE(interface, nullptr);
    Lines shown;
    for (GDBusMethodInfo **method = interface->methods; *method != nullptr; ++method)
        shown.push_back(std::string("method ") + (*method)->name + " " + arguments((*method)->in_args) + " -> " +
                        arguments((*method)->out_args));
    for (GDBusSignalInfo **signal = interface->signals; *signal != nullptr; ++signal)
        shown.push_back(std::string("signal ") + (*signal)->name + " " + arguments((*signal)->args));
    EXPECT_EQ(shown, wire_table());
    EXPECT_EQ(shown.size(), 108U);
    EXPECT_TRUE(interface->properties == nullptr || *interface->properties == nullptr);
    EXPECT_TRUE(node->nodes == nullptr || *node->nodes == nullptr);
    for (GDBusInterfaceInfo **other = node->interfaces; *other != nullptr; ++other)
        EXPECT_TRUE(*other == interface || std::string((*other)->name).starts_with("org.freedesktop.DBus."));
    g_dbus_node_info_unref(node);
}

TEST_F(Service, IssuesAndTakesBackHandles)
{
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
    EXPECT_EQ(peer.call("get_handle_for_playback"), "(2, 0)");
    EXPECT_EQ(peer.call("release_handle", "(1,)"), "(0,)");
    EXPECT_EQ(peer.call("release_handle", "(1,)"), "(-2,)");
    EXPECT_EQ(peer.call("get_handle"), "(3, 0)");
    EXPECT_EQ(peer.call("get_handle_for_record"), "([], 0)");
    EXPECT_EQ(peer.signals(), Lines());
}

TEST_F(Service, TellsOfAStartOnceItHasAnswered)
{
    peer.call("get_handle");
    EXPECT_EQ(start(recording, 30), "(0,)");
    settle();
    EXPECT_EQ(peer.signals(), (Lines{
                                  "result_to_apps (17, <(1, 0)>)",
                                  "PS_SIGNAL_TYPE_NOTIFY_PRE_PLAY_START of 1: PLAY_STATE_NONE " + recording,
                                  "result_to_apps (200, <(1,)>)",
                                  "result_to_apps (0, <(1, 0, 1)>)",
                                  changed("PLAY_STATE_PLAY", recording),
                              }));
    EXPECT_EQ(peer.call("get_pvr_state"), "(1, 0)");
    EXPECT_EQ(peer.call("is_playing_multimedia"), "(1,)");
}

TEST_F(Service, CarriesOutEveryCommandAndTellsOfIt)
{
    pause_at(50);
    const struct {
        std::string method;
        std::string arguments;
        Lines signals;
    } commands[] = {
        {"play_resume", "(1,)", {"result_to_apps (3, <(1, 0, 1)>)", changed("PLAY_STATE_PLAY", recording)}},
        {"play_pause", "(1,)", {"result_to_apps (1, <(1, 0, 2)>)", changed("PLAY_STATE_PAUSE", recording)}},
        {"play_forward",
         "(1, 10)",
         {"PS_SIGNAL_TYPE_NOTIFY_TRICKMODE_START of 1: PLAY_STATE_PAUSE " + recording,
          "result_to_apps (4, <(1, 0, 13)>)", changed("PLAY_STATE_FF_1_8", recording)}},
        {"play_rewind",
         "(1, 1)",
         {"PS_SIGNAL_TYPE_NOTIFY_TRICKMODE_START of 1: PLAY_STATE_FF_1_8 " + recording,
          "result_to_apps (5, <(1, 0, 14)>)", changed("PLAY_STATE_REW_1", recording)}},
        {"step_frame", "(1,)", {"result_to_apps (2, <(1, 0, 3)>)", changed("PLAY_STATE_FRAME_STEP", recording)}},
        {"play_skip",
         "(1, 3, 0, 25)",
         {"PS_SIGNAL_TYPE_NOTIFY_SKIP_START of 1: PLAY_STATE_FRAME_STEP " + recording,
          "result_to_apps (6, <(1, 0, 3)>)"}},
        {"play_stop",
         "(1,)",
         {"result_to_apps (7, <(1, 0, 24)>)", changed("PLAY_STATE_STOP", recording),
          "PS_SIGNAL_TYPE_NOTIFY_PLAY_DONE of 1: PLAY_STATE_STOP " + recording, "result_to_apps (200, <(0,)>)"}},
        {"play_pause", "(1,)", {"result_to_apps (1, <(1, -2, 0)>)"}},
    };
    for (const auto &[method, arguments, signals] : commands) {
        const bool is_refused = signals.front().ends_with("-2, 0)>)");
        EXPECT_EQ(peer.call(method, arguments), is_refused ? "(-2,)" : "(0,)") << method;
        settle();
        EXPECT_EQ(peer.signals(), signals) << method;
    }
}

TEST_F(Service, StopsAPlaybackInEveryWayThereIs)
{
    peer.call("get_handle");
    const std::pair<std::string, std::string> ways[] = {
        {"play_stop", "(1,)"},
        {"play_stop_to_dtv", "(1,)"},
        {"play_stop_by_uri", "(" + quoted("file://" + recording) + ",)"},
        {"sync_stop_playing", "('an application', 1)"},
        {"stop_playing_and_recording", "(1, 1)"},
        {"release_handle", "(1,)"},
    };
    for (const auto &[method, arguments] : ways) {
        EXPECT_EQ(start(recording, 0), "(0,)");
        EXPECT_EQ(peer.call(method, arguments), "(0,)") << method;
        EXPECT_EQ(peer.call("is_playing_multimedia"), "(0,)") << method;
        EXPECT_EQ(peer.signals().back(), "result_to_apps (200, <(0,)>)") << method;
        EXPECT_EQ(peer.call(method, arguments), method == "sync_stop_playing" ? "(0,)" : "(-2,)") << method;
    }
}

TEST_F(Service, TellsProgressInSecondsOfTheRecordingAndOfTheDay)
{
    pause_at(42);
    EXPECT_EQ(peer.call("get_progress", "(1,)"), "(2, 42, 1000000042, 0)");
    EXPECT_EQ(peer.call("get_progress", "(2,)"), "(0, 0, 0, -2)");
    EXPECT_EQ(peer.call("get_pvr_state"), "(2, 0)");
}

TEST_F(Service, HandsTheUriOutAsItWasGiven)
{
    peer.call("get_handle");
    EXPECT_EQ(peer.call("get_playback_uri_by_handle", "(1,)"), "('',)");
    EXPECT_EQ(start("file://" + recording, 0), "(0,)");
    EXPECT_EQ(peer.call("get_playback_uri_by_handle", "(1,)"), "('file://" + recording + "',)");
    EXPECT_EQ(peer.call("get_playback_uri_by_handle", "(7,)"), "('',)");
}

TEST_F(Service, TellsWhenTheEndIsReached)
{
    peer.call("get_handle");
    EXPECT_EQ(start(short_recording, 0), "(0,)");
    EXPECT_EQ(peer.call("play_forward", "(1, 1)"), "(0,)");
    peer.signals_until(changed("PLAY_STATE_FF_1", short_recording));
    EXPECT_EQ(peer.signals_until("result_to_apps (200"),
              (Lines{
                  "result_to_apps (101, <(1,)>)",
                  changed("PLAY_STATE_STOP", short_recording),
                  "PS_SIGNAL_TYPE_NOTIFY_PLAY_DONE of 1: PLAY_STATE_STOP " + short_recording,
                  "result_to_apps (200, <(0,)>)",
              }));
    EXPECT_EQ(peer.call("get_pvr_state"), "(0, 0)");
    EXPECT_EQ(start(short_recording, 0), "(0,)") << "the handle stays issued";
}

TEST_F(Service, PlaysOnWhenRewoundToTheBeginning)
{
    pause_at(1);
    EXPECT_EQ(peer.call("play_rewind", "(1, 7)"), "(0,)");
    peer.signals_until(changed("PLAY_STATE_REW_7", recording));
    EXPECT_EQ(peer.signals_until("PS_SIGNAL"), (Lines{
                                                   "result_to_apps (100, <(1,)>)",
                                                   changed("PLAY_STATE_PLAY", recording),
                                               }));
}

TEST_F(Service, TellsOfAUriThatCannotBePlayed)
{
    peer.call("get_handle");
    std::ofstream(folder / "text.srf") << "no transport stream";
    const std::pair<std::string, int> uris[] = {
        {folder / "missing.srf", 2}, {folder / "text.srf", 8}, {"/dev/null", 22}, {"relative.srf", 22}, {"", 22},
    };
    for (const auto &[uri, code] : uris) {
        EXPECT_EQ(start(uri, 0), "(-2,)") << uri;
        settle();
        const std::string error = std::to_string(code);
        EXPECT_EQ(peer.signals(),
                  (Lines{"result_to_apps (0, <(1, " + error + ", 0)>)",
                         "PS_SIGNAL_TYPE_PLAY_ERROR of 1: PLAY_STATE_NONE " + uri + " error " + error}));
    }
}

TEST_F(Service, AnswersEveryMethod)
{
    const std::map<char, std::string> values{{'i', "0"}, {'t', "uint64 0"}, {'u', "uint32 0"}, {'s', "''"}};
    Lines unanswered;
    int answered = 0;
    for (const std::string &line : wire_table()) {
        std::smatch parts;
        if (!std::regex_search(line, parts, std::regex(R"(^method (\w+) \(([^)]*)\))")))
            continue;
        const std::string method = parts[1];
        std::string arguments;
        std::string types = parts[2];
        for (std::smatch type; std::regex_search(types, type, std::regex(":(.)")); types = type.suffix())
            arguments += (arguments.empty() ? "" : ", ") + values.at(type.str(1).front());
        const bool is_single = !arguments.empty() && arguments.find(',') == std::string::npos;
        const bool is_unknown = peer.call(method, "(" + arguments + (is_single ? ",)" : ")"))
                                    .starts_with("org.freedesktop.DBus.Error.UnknownMethod");
        is_unknown ? unanswered.push_back(method) : void(++answered);
    }
    EXPECT_EQ(unanswered, Lines());
    EXPECT_EQ(answered, 106);
}

TEST_F(Service, RefusesCallsThatAreNotInTheInterface)
{
    EXPECT_EQ(peer.call("get_handle", "(1,)").substr(0, 39), "org.freedesktop.DBus.Error.InvalidArgs:");
    EXPECT_EQ(peer.call("nothing_of_the_kind").substr(0, 41), "org.freedesktop.DBus.Error.UnknownMethod:");
}

TEST_F(Service, ServesTheLibrary)
{
    int handle = 0;
    ASSERT_EQ(sscanf(peer.call("get_handle").c_str(), "(%d", &handle), 1);
    EXPECT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    int supported = 0;
    EXPECT_EQ(svc_pvr_is_support_pvr(&supported), PS_SUCCESS);
    EXPECT_EQ(supported, 1);
    EXPECT_EQ(svc_pvr_play_start(handle, recording.c_str(), 3), PS_SUCCESS);
    char uri[255] = "";
    EXPECT_EQ(svc_pvr_get_playback_uri_by_handle(handle, uri), PS_SUCCESS);
    EXPECT_EQ(uri, recording);
    int count = -1;
    EXPECT_EQ(svc_pvr_get_handle_for_record(nullptr, 0, &count), PS_SUCCESS);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(svc_pvr_stop_playing_sync("a test"), 0);
    EXPECT_EQ(svc_pvr_get_playback_uri_by_handle(handle, uri), PS_SUCCESS);
    EXPECT_STREQ(uri, "");
    EXPECT_EQ(svc_pvr_service_destroy(), PS_SUCCESS);
}

TEST_F(Service, LogsALineForEachCallAndSignal)
{
    pause_at(42);
    start(folder / "missing.srf", 0);
    peer.call("get_progress", "(1,)");
    peer.call("play_stop", "(2,)");
    Lines log = simulator.log();
    for (std::string &line : log)
        line = std::regex_replace(line, std::regex(" at 0\\.\\d s$"), " at 0.X s");
    EXPECT_EQ(log, (Lines{
                       "get_handle()  handle 1, ok",
                       "play_start(handle 1, uri " + recording + ", startPos 0)  ok",
                       "signal: playback 1, PS_PRE_PLAY_START",
                       "signal: playback 1, PS_SIGNAL_TYPE_NOTIFY_PRE_PLAY_START",
                       "signal: the service is playing, PS_PVR_STATE_CHANGE 1",
                       "signal: playback 1, PS_PLAY_START done at 0.X s",
                       "signal: playback 1 is PLAY_STATE_PLAY at 0.X s",
                       "play_pause(handle 1)  ok",
                       "signal: playback 1, PS_PLAY_PAUSE done at 0.X s",
                       "signal: playback 1 is PLAY_STATE_PAUSE at 0.X s",
                       "play_skip(handle 1, skip_type 0, skip_pos 42, rate 0)  ok",
                       "signal: playback 1, PS_SIGNAL_TYPE_NOTIFY_SKIP_START",
                       "signal: playback 1, PS_PLAY_SKIP done at 42.0 s",
                       "is_support_pvr()  result 1",
                       "play_start(handle 1, uri " + (folder / "missing.srf") +
                           ", startPos 0)  refused: No such file or directory",
                       "signal: playback 1, PS_PLAY_START refused with 2",
                       "signal: playback 1, PS_SIGNAL_TYPE_PLAY_ERROR",
                       "get_progress(handle 1)  out_result 2, relative_second 42, absolute_second 1000000042, ok",
                       "play_stop(handle 2)  refused: no such handle",
                       "signal: playback 2, PS_PLAY_STOP refused with -2",
                       // It is told to end.
                       "signal: playback 1, PS_PLAY_STOP done at 42.0 s",
                       "signal: playback 1 is PLAY_STATE_STOP at 42.0 s",
                       "signal: playback 1, PS_SIGNAL_TYPE_NOTIFY_PLAY_DONE",
                       "signal: the service is idle, PS_PVR_STATE_CHANGE 0",
                   }));
}
