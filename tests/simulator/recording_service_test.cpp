// Recordings and timeshift on a real bus: every method about them, the files they leave, and the signals that tell of
// them.
#include "info_file.h"
#include "peer.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

using namespace simulator_test;

namespace {

namespace fs = std::filesystem;

class RecordingService : public testing::Test {
protected:
    std::string start(const std::string &channel = "1", const std::string &reminder = "0")
    {
        return peer.call("call_app", "(0, uint64 " + channel + ", 1, '', uint32 " + reminder + ")");
    }
    std::string start_timeshift() { return peer.call("call_app", "(1, uint64 1, 1, '', uint32 0)"); }
    std::string of_channel(const std::string &method, const std::string &channel = "1")
    {
        return peer.call(method, "(uint64 " + channel + ",)");
    }
    std::string of_handle(const std::string &method, int handle)
    {
        return peer.call(method, "(" + std::to_string(handle) + ",)");
    }
    /// The path in an answer like ('/a.srf',).
    static std::string path(const std::string &answer) { return answer.substr(2, answer.size() - 5); }
    std::string path_of(const std::string &channel = "1")
    {
        return path(of_channel("get_recording_uri_by_service_id", channel));
    }
    /// Waits until a file has grown beyond a size.
    static void await_size(const std::string &file, std::uintmax_t size)
    {
        while (fs::file_size(file) < size)
            g_usleep(1000);
    }

    support::TemporaryFolder folder;
    const std::string device = made("usb");
    Simulator simulator{{"--device", "usb=" + device}};
    Peer peer;

private:
    std::string made(const std::string &name) const
    {
        fs::create_directory(folder / name);
        return folder / name;
    }
};

class RecordingWithoutDevice : public testing::Test {
protected:
    Simulator simulator;
    Peer peer;
};

} // namespace

TEST_F(RecordingService, RecordsAChannel)
{
    EXPECT_EQ(start(), "(0,)");
    const std::string file = path_of();
    EXPECT_TRUE(file.starts_with(device + "/2")) << file;
    EXPECT_TRUE(file.ends_with("-First.srf")) << file;
    EXPECT_EQ(of_channel("is_recording"), "(1,)");
    EXPECT_EQ(of_channel("is_timer_recording"), "(0,)");
    EXPECT_EQ(of_channel("is_timeshifting"), "(0,)");
    EXPECT_EQ(of_channel("is_recording", "2"), "(0,)");
    EXPECT_EQ(peer.call("is_recording_now"), "(1,)");
    EXPECT_EQ(peer.call("is_timeshifting_now"), "(0,)");
    EXPECT_EQ(of_channel("is_recording_with_main_tuner"), "(1,)");
    EXPECT_EQ(peer.call("get_current_recording_count"), "(1,)");
    EXPECT_EQ(peer.call("get_recording_service_id_list"), "([1], 1)");
    EXPECT_EQ(peer.call("get_handle_for_record"), "([1], 1)");
    EXPECT_EQ(of_channel("get_recording_type_by_service_id"), "(0,)");
    EXPECT_EQ(of_channel("get_record_state_by_service_id"), "(2, 0, 0)");
    EXPECT_EQ(peer.call("get_pvr_state"), "(0, 2)");
    EXPECT_EQ(path(of_handle("get_recording_uri", 1)), file);
    EXPECT_EQ(path(peer.call("get_current_recording_uri")), file);
    EXPECT_EQ(path(of_handle("get_inf_uri", 1)), file.substr(0, file.size() - 3) + "inf");
    EXPECT_EQ(peer.call("is_recording_file", "('" + file + "',)"), "(1,)");
    EXPECT_EQ(of_handle("get_recording_info", 1).substr(0, 8), "((1, 0, ");
    EXPECT_EQ(of_channel("is_past_record_complete"), "(0,)");
    await_size(file, 100'000);

    EXPECT_EQ(peer.call("sync_stop_recording", "(uint64 1, 'test')"), "(0,)");
    EXPECT_EQ(of_channel("is_recording"), "(0,)");
    EXPECT_EQ(peer.call("is_recording_file", "('" + file + "',)"), "(0,)");
    EXPECT_EQ(of_channel("is_past_record_complete"), "(1,)");
    EXPECT_EQ(fs::file_size(file) % 188, 0U);
    EXPECT_EQ(int{simulator::read_info(simulator::with_extension(file, "inf"))->record_complete}, 1);
    EXPECT_EQ(peer.call("get_system_record_num"), "(1,)");
    EXPECT_EQ(peer.call("sync_stop_recording", "(uint64 1, 'test')"), "(-2,)");
}

TEST_F(RecordingService, TellsNothingOfWhatIsNotRecorded)
{
    EXPECT_EQ(peer.call("is_recording_now"), "(0,)");
    EXPECT_EQ(peer.call("get_recording_service_id_list"), "([], 0)");
    EXPECT_EQ(of_channel("get_recording_type_by_service_id"), "(-1,)");
    EXPECT_EQ(of_channel("get_record_state_by_service_id"), "(0, 0, -2)");
    EXPECT_EQ(of_channel("get_progress_by_service_id"), "(0, 0, 0, -2)");
    EXPECT_EQ(of_channel("get_recording_duration_by_service_id"), "(0, -2)");
    EXPECT_EQ(of_handle("get_recording_duration", 1), "(0, -2)");
    EXPECT_EQ(of_handle("get_recording_info", 1), "((0, -1, 0, 0),)");
    for (const char *method : {"get_recording_uri", "get_inf_uri"})
        EXPECT_EQ(of_handle(method, 1), "('',)") << method;
    EXPECT_EQ(peer.call("get_current_recording_uri"), "('',)");
    EXPECT_EQ(of_channel("get_recording_uri_by_service_id"), "('',)");
    EXPECT_EQ(peer.call("get_pvr_state"), "(0, 0)");
    EXPECT_EQ(peer.call("call_app", "(99, uint64 1, 1, '', uint32 0)"), "(-2,)");
    EXPECT_EQ(peer.call("call_app", "(2, uint64 1, 1, '', uint32 0)"), "(-2,)");
}

TEST_F(RecordingService, TellsOfARecordingBySignals)
{
    EXPECT_EQ(start(), "(0,)");
    const std::string file = path_of();
    const std::string result = "(1, 0, 1, uint64 1, 0, 0)";
    EXPECT_EQ(peer.signals(), (Lines{"result_to_apps (200, <(2,)>)",
                                     "PS_SIGNAL_TYPE_NOTIFY_PRE_RECORD_START of 1: PS_RECORD_STATE_STOP " + file,
                                     "PS_SIGNAL_TYPE_RECORD_STATE_CHANGE of 1: PS_RECORD_STATE_PREPARING " + file,
                                     "result_to_apps (8, <" + result + ">)",
                                     "PS_SIGNAL_TYPE_RECORD_STATE_CHANGE of 1: PS_RECORD_STATE_REC " + file}));
    EXPECT_EQ(peer.call("call_app", "(2, uint64 1, 0, '', uint32 0)"), "(0,)");
    peer.call("get_pvr_state");
    Lines told = peer.signals();
    ASSERT_EQ(told.size(), 6U);
    EXPECT_TRUE(told[2].starts_with("result_to_apps (108, <(1, ")) << told[2];
    EXPECT_TRUE(told[2].ends_with(", 4000000)>)")) << told[2];
    told.erase(told.begin() + 2);
    EXPECT_EQ(told, (Lines{"PS_SIGNAL_TYPE_NOTIFY_PRE_RECORD_FINISH of 1: PS_RECORD_STATE_REC " + file,
                           "PS_SIGNAL_TYPE_RECORD_STATE_CHANGE of 1: PS_RECORD_STATE_STOP " + file,
                           "result_to_apps (11, <" + result + ">)",
                           "PS_SIGNAL_TYPE_NOTIFY_RECORD_DONE of 1: PS_RECORD_STATE_STOP " + file,
                           "result_to_apps (200, <(0,)>)"}));
}

TEST_F(RecordingService, RecordsOnAnApplicationsHandle)
{
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
    EXPECT_EQ(peer.call("set_channel_number_string", "(1, '12 HD')"), "(0,)");
    EXPECT_EQ(peer.call("record_start", "(1, uint64 2, 4)"), "()");
    EXPECT_EQ(of_channel("get_recording_type_by_service_id", "2"), "(4,)");
    EXPECT_EQ(of_channel("is_recording_with_main_tuner", "2"), "(0,)");
    const std::string file = path_of("2");
    const auto number = [&] {
        return std::string(simulator::read_info(simulator::with_extension(file, "inf"))->channel_num);
    };
    EXPECT_EQ(number(), "12 HD");
    EXPECT_EQ(peer.call("set_channel_number_string", "(1, '13')"), "(0,)");
    EXPECT_EQ(number(), "13") << "also while it records";
    EXPECT_EQ(peer.call("record_stop", "(1,)"), "()");
    EXPECT_EQ(of_channel("is_recording", "2"), "(0,)");
    EXPECT_TRUE(fs::exists(file));
    EXPECT_EQ(of_channel("delete_segment_record", "1"), "(-2,)");
    EXPECT_EQ(of_channel("delete_segment_record", "2"), "(0,)");
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(of_handle("release_handle", 1), "(0,)");
    peer.signals();
    EXPECT_EQ(peer.call("record_start", "(1, uint64 2, 0)"), "()");
    EXPECT_EQ(peer.call("record_stop", "(1,)"), "()");
    EXPECT_EQ(peer.call("get_pvr_state"), "(0, 0)");
    EXPECT_EQ(peer.signals(), (Lines{"result_to_apps (8, <(1, -2, 0, uint64 2, 0, -2)>)",
                                     "result_to_apps (11, <(1, -2, 0, uint64 0, -1, -2)>)"}));
}

TEST_F(RecordingService, KnowsTimerRecordings)
{
    EXPECT_EQ(start("1", "7"), "(0,)");
    EXPECT_EQ(of_channel("is_timer_recording"), "(1,)");
    EXPECT_EQ(peer.control("SetDate", "(false,)"), "()");
    EXPECT_EQ(start("2", "7"), "(251,)");
}

TEST_F(RecordingService, ChangesHowLongARecordingLasts)
{
    EXPECT_EQ(start(), "(0,)");
    EXPECT_EQ(of_handle("get_recording_duration", 1), "(0, 0)");
    EXPECT_EQ(peer.call("set_recording_duration", "(1, 100)"), "(0,)");
    EXPECT_EQ(of_channel("get_recording_duration_by_service_id"), "(100, 0)");
    EXPECT_EQ(peer.call("set_recording_duration_by_service_id", "(uint64 1, 200)"), "(0,)");
    EXPECT_EQ(of_handle("get_recording_duration", 1), "(200, 0)");
    EXPECT_EQ(of_handle("change_recording_duration_unlimited", 1), "(0,)");
    EXPECT_EQ(of_handle("get_recording_duration", 1), "(0, 0)");
    EXPECT_EQ(peer.call("set_recording_duration", "(1, -5)"), "(-2,)");
    EXPECT_EQ(peer.call("set_recording_duration", "(9, 5)"), "(-2,)");
    peer.signals();
    EXPECT_EQ(peer.call("call_app", "(4, uint64 1, 1, '', uint32 0)"), "(0,)");
    const Lines told = peer.signals_until("result_to_apps (200");
    EXPECT_EQ(told.front(), "result_to_apps (207, <(1,)>)");
    EXPECT_NE(std::find(told.begin(), told.end(), "result_to_apps (108, <(1, 1, 4000000)>)"), told.end());
    EXPECT_EQ(of_channel("is_recording"), "(0,)") << "it has ended by itself";
}

TEST_F(RecordingService, TellsHowFarARecordingIs)
{
    EXPECT_EQ(start(), "(0,)");
    const std::string progress = of_channel("get_progress_by_service_id");
    EXPECT_TRUE(progress.starts_with("(2, 0, 1")) << progress;
    EXPECT_EQ(of_handle("get_progress", 1).substr(0, 8), progress.substr(0, 8));
    peer.call("call_app", "(4, uint64 1, 1, '', uint32 0)");
    peer.signals_until("result_to_apps (200, <(0");
    EXPECT_EQ(of_handle("get_progress", 1), "(0, 0, 0, -2)");
}

TEST_F(RecordingService, AnswersWhetherAChannelCouldBeRecorded)
{
    const std::pair<std::string, std::string> answers[] = {{"1", "0"},   {"99", "202"},         {"4", "200"},
                                                           {"6", "102"}, {"4294967303", "256"}, {"5", "10"}};
    for (const auto &[channel, answer] : answers) {
        EXPECT_EQ(peer.call("precheck_recording_available", "(uint64 " + channel + ", 0)"), "(" + answer + ",)");
        EXPECT_EQ(peer.signals_until("result_to_apps"),
                  (Lines{"result_to_apps (16, <(0, " + answer + ", 0, uint64 " + channel + ", 0, " + answer + ")>)"}));
    }
    EXPECT_EQ(start("5"), "(10,)");
    EXPECT_NE(peer.call("get_max_recordable_time"), "(0,)");
}

TEST_F(RecordingService, TellsOfAChannelThatMayNotBeRecorded)
{
    EXPECT_EQ(start("4294967303"), "(256,)");
    const Lines told = peer.signals_until("result_to_apps (213, <(0, '')>)");
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(std::count_if(told.begin(), told.end(),
                            [](const std::string &signal) { return signal.starts_with("result_to_apps (8, "); }),
              1);
}

TEST_F(RecordingWithoutDevice, HasNothingToRecordTo)
{
    EXPECT_EQ(peer.call("call_app", "(0, uint64 1, 1, '', uint32 0)"), "(101,)");
    EXPECT_EQ(peer.call("get_max_recordable_time"), "(0,)");
    EXPECT_EQ(peer.call("get_system_record_num"), "(0,)");
}

TEST_F(RecordingService, TimeshiftsAChannel)
{
    EXPECT_EQ(start_timeshift(), "(0,)");
    const std::string file = device + "/timeshift.tmp";
    EXPECT_EQ(path_of(), file);
    EXPECT_EQ(of_channel("is_timeshifting"), "(1,)");
    EXPECT_EQ(of_channel("is_recording"), "(0,)");
    EXPECT_EQ(peer.call("is_timeshifting_now"), "(1,)");
    EXPECT_EQ(peer.call("is_recording_now"), "(0,)");
    EXPECT_EQ(peer.call("get_current_recording_count"), "(0,)");
    EXPECT_EQ(of_channel("get_record_state_by_service_id"), "(2, 1, 0)");
    EXPECT_EQ(peer.call("is_recording_file", "('timeshift.tmp',)"), "(1,)");
    EXPECT_EQ(start(), "(0,)");
    EXPECT_EQ(peer.call("get_recording_service_id_list"), "([1, 1], 2)");
    EXPECT_EQ(peer.call("call_app", "(3, uint64 1, 0, '', uint32 0)"), "(0,)");
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(start_timeshift(), "(0,)");
    EXPECT_EQ(peer.call("call_app", "(7, uint64 0, 0, '', uint32 0)"), "(0,)");
    EXPECT_EQ(peer.call("is_timeshifting_now"), "(0,)");
    EXPECT_EQ(of_channel("is_recording"), "(1,)");
}

TEST_F(RecordingService, PausesAndResumesWhatIsWatchedOfATimeshift)
{
    EXPECT_EQ(of_channel("play_pause_by_service_id"), "(-2,)");
    EXPECT_EQ(of_channel("play_resume_by_service_id"), "(-2,)");
    EXPECT_EQ(start_timeshift(), "(0,)");
    EXPECT_EQ(of_channel("get_play_state_by_service_id"), "(0,)");
    EXPECT_EQ(of_channel("play_pause_by_service_id"), "(0,)");
    EXPECT_EQ(of_channel("get_play_state_by_service_id"), "(2,)");
    EXPECT_EQ(of_channel("get_recording_type_by_service_id"), "(2,)") << "a timeshift that waits";
    EXPECT_EQ(of_channel("play_resume_by_service_id"), "(0,)");
    EXPECT_EQ(of_channel("get_play_state_by_service_id"), "(1,)");
    EXPECT_EQ(of_channel("get_recording_type_by_service_id"), "(1,)");
    EXPECT_EQ(peer.call("get_pvr_state"), "(1, 2)");
    EXPECT_EQ(of_handle("stop_pvr", 1), "(0,)");
    EXPECT_EQ(peer.call("get_pvr_state"), "(0, 0)") << "nothing is left to watch";
}

TEST_F(RecordingService, MakesARecordingOfATimeshift)
{
    EXPECT_EQ(start_timeshift(), "(0,)");
    peer.signals_until("PS_SIGNAL_TYPE_RECORD_STATE_CHANGE of 1: PS_RECORD_STATE_REC");
    EXPECT_EQ(peer.call("switch_to_record", "(1, 0)"), "()");
    EXPECT_EQ(of_channel("is_recording"), "(1,)");
    const Lines told = peer.signals();
    ASSERT_EQ(told.size(), 2U);
    EXPECT_EQ(told[0], "result_to_apps (12, <(1, 0, 1, uint64 1, 0, 0)>)");
    EXPECT_TRUE(told[1].starts_with("PS_SIGNAL_TYPE_RECORD_TYPE_CHANGE of 1: ")) << told[1];
    EXPECT_TRUE(path_of().ends_with("-First.srf"));
    EXPECT_EQ(peer.call("switch_to_record", "(1, 0)"), "()");
    peer.call("is_date_set");
    EXPECT_EQ(peer.signals(), (Lines{"result_to_apps (12, <(1, -2, 0, uint64 0, 0, -2)>)"}));
}

TEST_F(RecordingService, StopsWhateverAHandleStandsFor)
{
    EXPECT_EQ(start(), "(0,)");
    EXPECT_EQ(peer.call("stop_playing_and_recording", "(1, 0)"), "(0,)");
    EXPECT_EQ(start(), "(0,)");
    peer.signals();
    EXPECT_EQ(of_handle("stop_pvr", 2), "(0,)");
    peer.signals_until("result_to_apps (13");
    EXPECT_EQ(start(), "(0,)");
    EXPECT_EQ(start_timeshift(), "(0,)");
    EXPECT_EQ(peer.call("sync_stop_pvr", "(uint64 1, 'test')"), "(0,)");
    EXPECT_EQ(peer.call("get_handle_for_record"), "([], 0)");
    EXPECT_EQ(peer.call("sync_stop_pvr", "(uint64 1, 'test')"), "(-2,)");
    EXPECT_EQ(start(), "(0,)");
    EXPECT_EQ(of_handle("release_handle", 5), "(0,)");
    EXPECT_EQ(peer.call("get_handle_for_record"), "([], 0)");
    EXPECT_EQ(of_handle("release_handle", 5), "(-2,)");
    EXPECT_EQ(of_handle("stop_pvr", 5), "(-2,)");
    EXPECT_EQ(peer.call("get_system_record_num"), "(4,)");
}

TEST_F(RecordingService, PlaysWhatItStillRecords)
{
    EXPECT_EQ(start(), "(0,)");
    const std::string file = path_of();
    EXPECT_EQ(peer.call("get_handle"), "(2, 0)");
    EXPECT_EQ(peer.call("play_start", "(2, '" + file + "', 0)"), "(0,)");
    EXPECT_EQ(peer.call("delete_record_file", "('" + file + "',)"), "(-2,)");
    EXPECT_EQ(peer.call("sync_stop_recording", "(uint64 1, 'test')"), "(0,)");
    peer.signals_until("result_to_apps (101");
    EXPECT_EQ(peer.call("get_pvr_state"), "(0, 0)") << "its end has come";
}

TEST_F(RecordingService, RemovesARecordingWithAllThatLiesBesideIt)
{
    EXPECT_EQ(start(), "(0,)");
    const std::string file = path_of();
    EXPECT_EQ(peer.call("delete_record_file", "('" + file + "',)"), "(-2,)") << "it is being recorded";
    EXPECT_EQ(peer.call("remove_inf", "('" + simulator::with_extension(file, "inf") + "', 0)"), "(-2,)");
    EXPECT_EQ(peer.call("sync_stop_recording", "(uint64 1, 'test')"), "(0,)");
    EXPECT_EQ(peer.call("make_thumbnail_file", "('" + file + "', 0, 90, 160)"), "(0,)");
    EXPECT_EQ(fs::file_size(simulator::with_extension(file, "cft")), 52U);
    EXPECT_EQ(fs::file_size(simulator::with_extension(file, "yuv")), 160U * 90 * 3 / 2);
    EXPECT_EQ(peer.signals_until("PS_SIGNAL_TYPE_THUMB_DONE").size() >= 3, true);
    EXPECT_EQ(peer.call("make_thumbnail_file", "('" + file + "', 0, 0, 160)"), "(-2,)");
    EXPECT_EQ(peer.signals_until("result_to_apps").back(), "result_to_apps (104, <(-2, '" + file + "')>)");
    EXPECT_EQ(peer.call("delete_record_file", "('" + file + "',)"), "(0,)");
    EXPECT_TRUE(fs::is_empty(device));
    EXPECT_EQ(peer.call("delete_record_file", "('" + file + "',)"), "(-2,)");
}

TEST_F(RecordingService, TouchesNothingThatIsNoRecordingOnADevice)
{
    const std::string beside = folder / "beside.srf";
    const std::string other = device + "/other.txt";
    const std::string link = device + "/link.srf";
    std::ofstream(beside) << "content";
    std::ofstream(other) << "content";
    fs::create_symlink(beside, link);
    for (const std::string &file :
         {beside, other, link, device + "/../beside.srf", std::string("beside.srf"), std::string()}) {
        EXPECT_EQ(peer.call("delete_record_file", "('" + file + "',)"), "(-2,)") << file;
        EXPECT_EQ(peer.call("remove_inf", "('" + file + "', 0)"), "(-2,)") << file;
        EXPECT_EQ(peer.call("make_thumbnail_file", "('" + file + "', 0, 9, 9)"), "(-2,)") << file;
        EXPECT_EQ(peer.call("check_parent_lock", "('" + file + "',)"), "(-2,)") << file;
    }
    EXPECT_EQ(peer.call("get_system_record_num"), "(0,)");
    EXPECT_EQ(folder.names(), (Lines{"beside.srf", "usb"}));
    EXPECT_TRUE(fs::exists(other));
}

TEST_F(RecordingService, TakesNoteOfWhatIsWrittenBesideARecording)
{
    EXPECT_EQ(start(), "(0,)");
    const std::string file = path_of();
    const std::string info = simulator::with_extension(file, "inf");
    EXPECT_EQ(peer.call("set_pvr_file_info", "('" + info + "', '', 1)"), "(0,)");
    EXPECT_EQ(peer.call("set_fp_rec_time", "('" + file + "', 1)"), "(0,)");
    EXPECT_EQ(peer.call("set_pvr_file_info", "('/a.inf', '', 1)"), "(-2,)");
    EXPECT_EQ(peer.call("set_fp_rec_time", "('/a.srf', 1)"), "(-2,)");
}

TEST_F(RecordingService, KnowsWhichRecordingIsNotForChildren)
{
    EXPECT_EQ(start(), "(0,)");
    const std::string file = path_of();
    EXPECT_EQ(peer.call("sync_stop_recording", "(uint64 1, 'test')"), "(0,)");
    EXPECT_EQ(peer.call("check_parent_lock", "('" + file + "',)"), "(0,)");
    const std::string info = simulator::with_extension(file, "inf");
    simulator::change_info(info, [](pvr_file_info_s &changed) { changed.rating = 18; });
    EXPECT_EQ(peer.call("check_parent_lock", "('" + file + "',)"), "(1,)");
    EXPECT_EQ(peer.call("remove_inf", "('" + info + "', 0)"), "(0,)");
    EXPECT_FALSE(fs::exists(info));
    EXPECT_TRUE(fs::exists(file));
    EXPECT_EQ(peer.call("check_parent_lock", "('" + file + "',)"), "(0,)");
    EXPECT_EQ(peer.call("remove_inf", "('" + info + "', 0)"), "(-2,)");
}

TEST_F(RecordingService, AsksBeforeItChangesAwayFromARecording)
{
    EXPECT_EQ(start("1"), "(0,)");
    EXPECT_EQ(start("2"), "(0,)");
    EXPECT_EQ(start("3"), "(4,)") << "both tuners are in use";
    EXPECT_EQ(of_channel("is_change_available_on_recording", "2"), "(1, 0)");
    EXPECT_EQ(of_channel("is_change_available_on_recording", "3"), "(0, 1)");
    EXPECT_EQ(of_channel("is_change_available_on_recording", "99"), "(-2, 0)");
    EXPECT_EQ(peer.call("is_all_descrambled"), "(1,)");
    EXPECT_EQ(peer.call("is_source_change_available_on_recording", "(1,)"), "(1,)");
    EXPECT_EQ(peer.call("is_source_change_available_on_recording", "(3,)"), "(0,)");
    EXPECT_EQ(peer.control("Tune", "(uint64 2,)"), "()");
    peer.signals_until("result_to_apps (107");
    EXPECT_EQ(peer.control("Tune", "(uint64 3,)").substr(0, 33), "org.freedesktop.DBus.Error.Failed");
    EXPECT_EQ(peer.signals_until("result_to_apps"), (Lines{"result_to_apps (203, <(uint64 3,)>)"}));
    EXPECT_EQ(peer.call("set_change_channel_flag", "(uint64 0,)"), "()");
    EXPECT_EQ(peer.call("set_change_channel_flag", "(uint64 1,)"), "()") << "nobody wants it any longer";
    EXPECT_EQ(peer.call("get_current_service_id"), "(2,)");
    peer.control("Tune", "(uint64 3,)");
    EXPECT_EQ(peer.call("set_change_channel_flag", "(uint64 1,)"), "()");
    EXPECT_EQ(peer.call("get_current_service_id"), "(3,)");
    EXPECT_EQ(peer.call("get_recording_service_id_list"), "([2], 1)") << "the oldest has made room";
}

TEST_F(RecordingService, TellsAllApplicationsWhatOneKnows)
{
    EXPECT_EQ(peer.call("inform_third_part", "(0, 160, 3, uint64 7, 42)"), "()");
    EXPECT_EQ(peer.call("inform_third_part", "(1, 0, 0, uint64 8, 43)"), "()");
    EXPECT_EQ(peer.call("inform_third_part", "(2, 0, 0, uint64 8, 43)"), "()");
    peer.call("is_date_set");
    EXPECT_EQ(peer.signals(), (Lines{"result_to_apps (8, <(0, 160, 42, uint64 7, 3, 0)>)",
                                     "result_to_apps (11, <(0, 0, 43, uint64 8, 0, 0)>)"}));
}

TEST_F(RecordingService, RemembersWhetherTimeshiftStartsByItself)
{
    EXPECT_EQ(peer.call("get_ts_auto_start_flag"), "(0, 0)");
    EXPECT_EQ(peer.call("set_ts_auto_start_flag", "(1,)"), "(0,)");
    EXPECT_EQ(peer.call("get_ts_auto_start_flag"), "(1, 0)");
}

TEST_F(RecordingService, FormatsNoDeviceThatItRecordsTo)
{
    EXPECT_EQ(start(), "(0,)");
    EXPECT_EQ(peer.call("format", "(1, 0)"), "(-2,)");
    EXPECT_EQ(of_channel("is_recording"), "(1,)");
}

TEST_F(RecordingService, CompletesWhatItRecordsWhenItEnds)
{
    EXPECT_EQ(start(), "(0,)");
    const std::string file = path_of();
    simulator.log();
    EXPECT_EQ(int{simulator::read_info(simulator::with_extension(file, "inf"))->record_complete}, 1);
}
