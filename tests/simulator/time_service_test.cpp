// The set's time on a real bus: stepped, faster than it is, and recordings that are set for later.
#include "recording_peer.h"
#include "test_programme.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

using namespace simulator_test;

namespace {

namespace fs = std::filesystem;

const std::string radio = "3";
constexpr std::uintmax_t radio_rate = 23'500; ///< bytes a second

std::int64_t changed(const std::string &path)
{
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mtim.tv_sec;
}

class SteppedTime : public RecordingPeer {
protected:
    SteppedTime() { run({"--bit-rate", "1=188000", "--bit-rate", "2=376000", "--timeshift", "60"}); }

    /// The first two numbers behind the state: (2, 60, 1700000000, 0)
    static std::pair<std::int64_t, std::int64_t> seconds(const std::string &progress)
    {
        const std::size_t first = progress.find(", ") + 2;
        const std::size_t second = progress.find(", ", first) + 2;
        return {std::stoll(progress.substr(first)), std::stoll(progress.substr(second))};
    }
};

class FastTime : public RecordingPeer {
protected:
    /// The recording of a channel, of which there is one.
    std::string recording(const std::string &channel) const
    {
        for (const auto &entry : fs::directory_iterator(device))
            if (entry.path().string().ends_with(channel + ".srf"))
                return entry.path();
        return "none";
    }
};

} // namespace

TEST_F(SteppedTime, LetsARecordingEndAtItsMoment)
{
    EXPECT_EQ(start(radio, 600), "(0,)");
    const std::string path = path_of(radio);
    peer.signals();
    step(7200);
    peer.call("is_date_set");
    EXPECT_EQ(peer.signals(),
              (Lines{"PS_SIGNAL_TYPE_NOTIFY_PRE_RECORD_FINISH of 1: PS_RECORD_STATE_REC " + path,
                     "PS_SIGNAL_TYPE_RECORD_STATE_CHANGE of 1: PS_RECORD_STATE_STOP " + path,
                     "result_to_apps (108, <(1, 600, 188000)>)", "result_to_apps (11, <(1, 0, 1, uint64 3, 0, 0)>)",
                     "PS_SIGNAL_TYPE_NOTIFY_RECORD_DONE of 1: PS_RECORD_STATE_STOP " + path,
                     "result_to_apps (200, <(0,)>)"}));
    EXPECT_EQ(fs::file_size(path), 600 * radio_rate);
    EXPECT_EQ(std::uint32_t{info(path).duration}, 600'000U);
    EXPECT_EQ(changed(path) - std::int64_t{info(path).start_time}, 600) << "it ended then, also for who plays it";
}

TEST_F(SteppedTime, WritesWhatTheTimeAsksFor)
{
    EXPECT_EQ(start("1"), "(0,)");
    EXPECT_EQ(start("2"), "(0,)");
    const std::string first = path_of("1"), second = path_of("2");
    step(300);
    EXPECT_GE(fs::file_size(first), 300 * radio_rate);
    EXPECT_GE(fs::file_size(second), 300 * 2 * radio_rate);
    EXPECT_GE(seconds(of_channel("get_progress_by_service_id", "1")).first, 300);
    EXPECT_EQ(peer.call("sync_stop_recording", "(uint64 1, 'test')"), "(0,)");
    const std::uintmax_t due = std::uintmax_t{info(first).duration} * radio_rate / 1000;
    EXPECT_LE(fs::file_size(first), due + radio_rate / 1000) << "the duration is cut to milliseconds";
    EXPECT_GT(fs::file_size(first) + 188, due);
}

TEST_F(SteppedTime, StampsWhatIsMadeWithTheSetsTime)
{
    std::array<std::uint32_t, 2> starts{};
    for (std::uint32_t &start_time : starts) {
        EXPECT_EQ(start(radio), "(0,)");
        const std::string path = path_of(radio);
        start_time = info(path).start_time;
        const std::time_t seconds = start_time;
        std::tm parts{};
        gmtime_r(&seconds, &parts);
        std::array<char, 32> stamp{};
        std::strftime(stamp.data(), stamp.size(), "%Y%m%d-%H%M%S", &parts);
        EXPECT_EQ(path, device + "/" + stamp.data() + "-Radio-Three.srf");
        EXPECT_EQ(seconds <= this->seconds(of_channel("get_progress_by_service_id", radio)).second, true);
        EXPECT_EQ(peer.call("sync_stop_recording", "(uint64 3, 'test')"), "(0,)");
        step(24 * 60 * 60);
    }
    EXPECT_GE(starts[1] - starts[0], 24U * 60 * 60);
    const std::string told = of_channel("get_channel_info", radio); // start and end of the programme
    const std::size_t begin = told.find("<uint32 ") + 8;
    EXPECT_GE(std::stoll(told.substr(begin)), std::int64_t{starts[1]} + 24 * 60 * 60 - 1800);
}

TEST_F(SteppedTime, MovesWhatPlays)
{
    simulator::write_test_programme(folder / "a.srf", 1000);
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
    EXPECT_EQ(peer.call("play_start", "(1, '" + (folder / "a.srf") + "', 100)"), "(0,)");
    step(200);
    EXPECT_EQ(peer.call("play_pause", "(1,)"), "(0,)");
    const std::string paused = peer.call("get_progress", "(1,)");
    EXPECT_GE(seconds(paused).first, 300);
    step(500);
    EXPECT_EQ(peer.call("get_progress", "(1,)"), paused);
    EXPECT_EQ(peer.call("play_rewind", "(1, 1)"), "(0,)");
    peer.signals();
    step(3600);
    peer.call("is_date_set");
    const Lines told = peer.signals();
    const auto beginning = std::find(told.begin(), told.end(), "result_to_apps (100, <(1,)>)");
    const auto end = std::find(told.begin(), told.end(), "result_to_apps (101, <(1,)>)");
    EXPECT_TRUE(beginning < end && end != told.end()) << "back to the beginning, and from there to the end";
    EXPECT_EQ(peer.call("get_pvr_state"), "(0, 0)");
}

TEST_F(SteppedTime, EndsTheWorkOfADevice)
{
    EXPECT_EQ(peer.call("start_performance_test", "(1,)"), "(0,)");
    step(1);
    EXPECT_EQ(peer.call("get_performance_test_result", "(1,)"), "(1,)");
}

TEST_F(SteppedTime, LeavesTheMomentsOfCallsAlone)
{
    peer.call("is_date_set");
    step(24 * 60 * 60);
    peer.call("is_date_set");
    const std::string calls = peer.control("ListCalls", "(uint64 0,)");
    std::array<std::int64_t, 2> arrivals{};
    std::size_t at = 0;
    for (std::int64_t &arrival : arrivals) {
        at = calls.find('(', at + 1);
        arrival = std::stoll(calls.substr(calls.find(", ", at) + 2));
    }
    EXPECT_LT(arrivals[1] - arrivals[0], 24 * 60 * 60 * std::int64_t{1'000'000}) << calls;
}

TEST_F(SteppedTime, RefusesAStepOfMoreThanAMonth)
{
    EXPECT_EQ(peer.control("Step", "(uint64 2678401,)"), "org.freedesktop.DBus.Error.InvalidArgs: more than 31 days");
    EXPECT_EQ(peer.control("Step", "(uint64 18446744073709551615,)"),
              "org.freedesktop.DBus.Error.InvalidArgs: more than 31 days");
    EXPECT_EQ(peer.control("Step", "(uint64 0,)"), "()");
    step(2678400);
}

TEST_F(SteppedTime, StartsTimerRecordingsAndEndsThem)
{
    EXPECT_EQ(schedule(radio, 3600, 600), "(1,)");
    EXPECT_EQ(schedule("1", 3600 + 600, 600), "(2,)");
    step(1800);
    EXPECT_EQ(of_channel("is_recording", radio), "(0,)");
    peer.signals();
    step(1800);
    EXPECT_EQ(of_channel("is_timer_recording", radio), "(1,)");
    const std::string path = path_of(radio);
    EXPECT_EQ(peer.signals(), (Lines{"result_to_apps (200, <(2,)>)",
                                     "PS_SIGNAL_TYPE_NOTIFY_PRE_RECORD_START of 1: PS_RECORD_STATE_STOP " + path,
                                     "PS_SIGNAL_TYPE_RECORD_STATE_CHANGE of 1: PS_RECORD_STATE_PREPARING " + path,
                                     "result_to_apps (8, <(1, 0, 1, uint64 3, 3, 0)>)",
                                     "PS_SIGNAL_TYPE_RECORD_STATE_CHANGE of 1: PS_RECORD_STATE_REC " + path,
                                     "result_to_apps (207, <(1,)>)"}));
    step(3600);
    EXPECT_EQ(peer.call("is_recording_now"), "(0,)");
    EXPECT_EQ(of_channel("is_past_record_complete", "1"), "(1,)");
    EXPECT_EQ(fs::file_size(path), 600 * radio_rate);
    std::vector<pvr_file_info_s> made;
    for (const auto &entry : fs::directory_iterator(device))
        if (entry.path().extension() == ".srf")
            made.push_back(info(entry.path()));
    ASSERT_EQ(made.size(), 2U);
    std::sort(made.begin(), made.end(), [](const pvr_file_info_s &one, const pvr_file_info_s &other) {
        return std::uint32_t{one.start_time} < std::uint32_t{other.start_time};
    });
    for (const pvr_file_info_s &one : made)
        EXPECT_EQ(std::uint32_t{one.duration}, 600'000U);
    EXPECT_GE(made[1].start_time - made[0].start_time, 600U);
}

TEST_F(SteppedTime, TellsWhyATimerRecordingCannotStart)
{
    const auto told = [&](const std::string &channel) {
        schedule(channel, 10, 5);
        step(10);
        return peer.signals_until("result_to_apps (8,").back();
    };
    EXPECT_EQ(peer.control("SetDate", "(false,)"), "()");
    EXPECT_EQ(told(radio), "result_to_apps (8, <(0, 251, 0, uint64 3, 3, 251)>)");
    EXPECT_EQ(peer.control("SetDate", "(true,)"), "()");
    EXPECT_EQ(start("2"), "(0,)");
    peer.signals_until("PS_SIGNAL_TYPE_RECORD_STATE_CHANGE of 1: PS_RECORD_STATE_REC");
    EXPECT_EQ(told(radio), "result_to_apps (8, <(0, 4, 0, uint64 3, 3, 4)>)");
    EXPECT_EQ(told("2"), "result_to_apps (8, <(0, 3, 0, uint64 2, 3, 3)>)");
    fs::remove_all(device);
    peer.signals_until("result_to_apps (200, <(0,)>)");
    EXPECT_EQ(told(radio), "result_to_apps (8, <(0, 101, 0, uint64 3, 3, 101)>)");
}

TEST_F(SteppedTime, CancelsTimerRecordings)
{
    const std::string unknown = "org.freedesktop.DBus.Error.InvalidArgs: no such timer recording";
    EXPECT_EQ(schedule(radio, 3600, 0), "(1,)");
    EXPECT_EQ(peer.control("CancelRecording", "(uint32 1,)"), "()");
    EXPECT_EQ(peer.control("CancelRecording", "(uint32 1,)"), unknown);
    step(3600);
    EXPECT_EQ(of_channel("is_recording", radio), "(0,)");
    EXPECT_EQ(schedule(radio, 0, 0), "(2,)");
    EXPECT_EQ(of_channel("is_timer_recording", radio), "(1,)");
    EXPECT_EQ(peer.control("CancelRecording", "(uint32 2,)"), "()");
    EXPECT_EQ(of_channel("is_recording", radio), "(0,)");
    EXPECT_EQ(peer.control("CancelRecording", "(uint32 2,)"), unknown);
    EXPECT_EQ(schedule("99", 1, 1), "org.freedesktop.DBus.Error.InvalidArgs: no such channel");
    EXPECT_EQ(schedule(radio, 366 * 24 * 60 * 60 + 1, 1), "org.freedesktop.DBus.Error.InvalidArgs: more than 366 days");
}

TEST_F(SteppedTime, GivesUpTheBeginningOfALongTimeshift)
{
    EXPECT_EQ(peer.call("call_app", "(1, uint64 1, 1, '', uint32 0)"), "(0,)");
    step(30);
    EXPECT_EQ(of_channel("play_pause_by_service_id", "1"), "(0,)");
    const auto [paused_at, moment] = seconds(peer.call("get_progress", "(1,)"));
    EXPECT_GE(paused_at, 30);
    step(3600);
    EXPECT_EQ(seconds(of_channel("get_progress_by_service_id", "1")).first, 60);
    const auto [later, later_moment] = seconds(peer.call("get_progress", "(1,)"));
    EXPECT_EQ(later, 0) << "what was paused is gone";
    EXPECT_GE(later_moment - moment, 3600 - 60);
    EXPECT_EQ(of_channel("get_play_state_by_service_id", "1"), "(2,)") << "it waits there";
    EXPECT_EQ(peer.call("switch_to_record", "(1, 0)"), "()");
    const std::string path = path_of("1");
    EXPECT_EQ(peer.call("sync_stop_recording", "(uint64 1, 'test')"), "(0,)");
    EXPECT_GE(std::uint32_t{info(path).duration}, 60'000U);
    EXPECT_EQ(peer.call("get_handle"), "(2, 0)");
    EXPECT_EQ(peer.call("play_start", "(2, '" + path + "', 0)"), "(0,)") << "it is a whole recording";
    EXPECT_FALSE(fs::exists(device + "/timeshift.tmp"));
}

TEST_F(FastTime, PassesForAnEveningOfTwoHours)
{
    const char *speed = std::getenv("PVR_EVENING_SPEED"); // 60 takes two minutes
    run({"--speed", speed != nullptr ? speed : "1440", "--tuners", "3", "--bit-rate", "1=188000", "--bit-rate",
         "2=188000"});
    struct Programme {
        std::string name;
        std::string service_id;
        unsigned from, duration; ///< seconds
    };
    // One begins when another ends, and one goes on beside both.
    const std::array<Programme, 3> evening{
        {{"First", "1", 60, 1800}, {"Radio-Three", radio, 120, 6000}, {"Second", "2", 1860, 5340}}};
    for (const Programme &programme : evening)
        schedule(programme.service_id, static_cast<int>(programme.from), static_cast<int>(programme.duration));
    for (const Programme &programme : evening) // in the order of their ends, too
        EXPECT_NE(peer.signals_until("result_to_apps (108").back().find(", " + std::to_string(programme.duration)),
                  std::string::npos);
    peer.signals_until("result_to_apps (200, <(0,)>)");
    std::map<std::string, std::uint32_t> starts;
    for (const Programme &programme : evening) {
        const std::string path = recording(programme.name);
        const pvr_file_info_s told = info(path);
        EXPECT_EQ(std::uint32_t{told.duration}, programme.duration * 1000) << path;
        EXPECT_EQ(std::uint32_t{told.record_complete}, 1U) << path;
        EXPECT_EQ(fs::file_size(path), programme.duration * radio_rate) << path;
        EXPECT_EQ(changed(path) - std::int64_t{told.start_time}, programme.duration) << path;
        starts[programme.name] = told.start_time;
    }
    EXPECT_GE(starts["Radio-Three"] - starts["First"], 60U) << "they were set one after another";
    EXPECT_GE(starts["Second"] - starts["First"], 1800U);
}

TEST_F(FastTime, PlaysAsFast)
{
    run({"--speed", "600"});
    simulator::write_test_programme(folder / "a.srf", 100);
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
    EXPECT_EQ(peer.call("play_start", "(1, '" + (folder / "a.srf") + "', 10)"), "(0,)");
    peer.signals_until("result_to_apps (101");
    EXPECT_EQ(peer.call("get_pvr_state"), "(0, 0)");
}

TEST_F(FastTime, MayBeSlowToo)
{
    run({"--speed", "0.01"});
    EXPECT_EQ(start(radio), "(0,)");
    step(100);
    EXPECT_GE(fs::file_size(path_of(radio)), 100 * radio_rate) << "a step is as long as ever";
    EXPECT_EQ(peer.call("sync_stop_recording", "(uint64 3, 'test')"), "(0,)");
}
