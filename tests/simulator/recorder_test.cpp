// Recordings, with a clock that the test moves, folders that are devices, and a source that the test feeds.
#include "recorder_fixture.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/file.h>
#include <system_error>
#include <vector>

using namespace recorder_test;

TEST_F(RecorderTest, TellsHowARecordingStartsAndStops)
{
    EXPECT_TRUE(recorder->start(std::nullopt, first, PS_RECORD_TYPE_NORMAL).is_done());
    EXPECT_EQ(events(), (Lines{"busy or idle", "1 will start", "1 is PS_RECORD_STATE_PREPARING", "1 PS_RECORD_START 0",
                               "1 is PS_RECORD_STATE_REC"}));
    pass(3900ms);
    EXPECT_EQ(recorder->seconds(*recorder->recording_of(first)), 3);
    EXPECT_TRUE(recorder->stop(1).is_done());
    EXPECT_EQ(events(), (Lines{"1 will finish", "1 is PS_RECORD_STATE_STOP", "1 lasted 3 s", "1 PS_RECORD_STOP 0",
                               "1 is over", "busy or idle"}));
    EXPECT_EQ(recorder->recording_of(first), nullptr);
    EXPECT_FALSE(handles.is_issued(1)) << "it was issued for the recording";
    EXPECT_EQ(recorder->stop(1).reason, "nothing is recorded on this handle");
    EXPECT_EQ(events(), (Lines{"1 PS_RECORD_STOP -2"}));
}

TEST_F(RecorderTest, WritesAtTheRateOfTheChannel)
{
    start(first);
    const std::string path = recorder->recording_of(first)->file.path();
    EXPECT_EQ(path, folder / "usb/20231114-221320-First.srf");
    for (int seconds = 1; seconds <= 10; ++seconds) {
        pass_in_steps(1s);
        const std::uintmax_t due = 500'000U * static_cast<unsigned>(seconds);
        EXPECT_EQ(fs::file_size(path), due / 188 * 188);
    }
    EXPECT_EQ(int{info(path).record_complete}, 0);
    pass(90ms);
    recorder->stop_recording(first);
    EXPECT_EQ(fs::file_size(path), 10'090U * 500 / 188 * 188) << "up to the very end";
}

TEST_F(RecorderTest, DescribesARecordingInItsInfoFile)
{
    start(radio);
    const std::string path = recorder->recording_of(radio)->file.path();
    EXPECT_EQ(path, folder / "usb/20231114-221320-Radio-Three.srf");
    EXPECT_EQ(fs::file_size(with_extension(path, "inf")), 10905U);
    pvr_file_info_s running = info(path);
    EXPECT_EQ(int{running.version}, 20);
    EXPECT_STREQ(running.channel_name, "Radio Three");
    EXPECT_NE(std::strstr(running.programe_title, "Silence"), nullptr);
    EXPECT_STREQ(running.channel_num, "3-1");
    EXPECT_EQ(std::uint32_t{running.start_time}, noon);
    EXPECT_EQ(std::uint32_t{running.duration}, 0U);
    EXPECT_EQ(std::uint32_t{running.nThumbnailType}, 1U);
    EXPECT_EQ(int{running.program_num}, 7);
    EXPECT_EQ(std::uint32_t{running.PCR_pid}, 0x21U);
    EXPECT_EQ(std::uint32_t{running.audio_pid}, 0x22U);
    EXPECT_EQ(std::uint32_t{running.video_pid}, 0x23U);
    EXPECT_EQ(int{running.major}, 3);
    EXPECT_EQ(int{running.minor}, 1);
    EXPECT_EQ(int{running.record_complete}, 0);
    pass(2500ms);
    // An application has written meanwhile: what it changed stays.
    change_info(with_extension(path, "inf"), [](pvr_file_info_s &changed) { changed.resume_play_pos = 1500; });
    recorder->stop_recording(radio);
    const pvr_file_info_s ended = info(path);
    EXPECT_EQ(std::uint32_t{ended.duration}, 2500U);
    EXPECT_EQ(int{ended.record_complete}, 1);
    EXPECT_EQ(int{ended.incomplete_reason}, 0);
    EXPECT_EQ(std::uint32_t{ended.resume_play_pos}, 1500U);
    EXPECT_TRUE(recorder->is_last_complete(radio));
    EXPECT_FALSE(recorder->is_last_complete(first));
}

TEST_F(RecorderTest, TakesTheChannelNumberThatAnApplicationHasSet)
{
    const int handle = handles.issue();
    channel_number = "12 HD";
    EXPECT_TRUE(recorder->start(handle, first, PS_RECORD_TYPE_NORMAL).is_done());
    EXPECT_STREQ(info(recorder->recording_of(first)->file.path()).channel_num, "12 HD");
    EXPECT_TRUE(recorder->stop(handle).is_done());
    EXPECT_TRUE(handles.is_issued(handle)) << "it is the application's";
}

TEST_F(RecorderTest, KeepsTheFilesOfRecordingsApart)
{
    channels.set_date(false);
    for (const char *name : {"undated-First", "undated-First-2", "undated-First-3"}) {
        start(first);
        EXPECT_EQ(recorder->recording_of(first)->file.path(), folder / "usb/" + name + ".srf");
        recorder->stop_recording(first);
    }
}

TEST_F(RecorderTest, EndsByItselfAfterItsDuration)
{
    start(first);
    const std::string path = recorder->recording_of(first)->file.path();
    pass(2s);
    EXPECT_TRUE(recorder->set_duration(recorder->recording_of(first), 5).is_done());
    EXPECT_EQ(events(), (Lines{"1 lasts 5 s"}));
    EXPECT_EQ(recorder->set_duration(recorder->recording_of(first), 2).reason, "it has lasted longer already");
    EXPECT_EQ(recorder->set_duration(recorder->recording_of(first), -1).reason, "it has lasted longer already");
    EXPECT_EQ(recorder->set_duration(nullptr, 9).reason, "nothing is recorded there");
    EXPECT_EQ(recorder->recording_of(first)->duration, 5);
    pass(60s); // noticed late, which changes nothing
    EXPECT_EQ(events(), (Lines{"1 will finish", "1 is PS_RECORD_STATE_STOP", "1 lasted 5 s", "1 PS_RECORD_STOP 0",
                               "1 is over", "busy or idle"}));
    EXPECT_EQ(fs::file_size(path), 5U * 500'000 / 188 * 188);
    EXPECT_EQ(std::uint32_t{info(path).duration}, 5000U);
    EXPECT_EQ(recorder->due(), std::nullopt);
}

TEST_F(RecorderTest, GoesOnUntilItIsStoppedOnceItsDurationIsTakenBack)
{
    start(first);
    recorder->set_duration(recorder->recording_of(first), 5);
    EXPECT_TRUE(recorder->set_duration(recorder->recording_of(first), 0).is_done());
    pass_in_steps(20s);
    ASSERT_NE(recorder->recording_of(first), nullptr);
    EXPECT_EQ(recorder->seconds(*recorder->recording_of(first)), 20);
}

TEST_F(RecorderTest, CatchesUpWhenItWasHeldUp)
{
    start(first);
    const std::string path = recorder->recording_of(first)->file.path();
    pass(60s);
    EXPECT_EQ(fs::file_size(path), 60U * 500'000 / 188 * 188);
}

TEST_F(RecorderTest, RefusesWhatCannotBeRecorded)
{
    const auto code = [&](std::uint64_t channel, ps_record_type_e type = PS_RECORD_TYPE_NORMAL) {
        const int expected = recorder->precheck(channel, type);
        EXPECT_EQ(recorder->start(std::nullopt, channel, type).result, expected);
        return expected;
    };
    EXPECT_EQ(code(99), 202);
    EXPECT_EQ(code(4), 200) << "analogue";
    EXPECT_EQ(code(6), 102) << "no signal";
    EXPECT_EQ(code(4294967303), 256) << "scrambled";
    EXPECT_EQ(code(5), 10) << "locked";
    channels.set_date(false);
    EXPECT_EQ(code(first, PS_RECORD_TYPE_TIMER), 251);
    channels.set_date(true);
    space = Devices::least_space - 1;
    EXPECT_EQ(code(first), 160);
    space = 1000;
    fs::remove(folder / "usb");
    devices->advance();
    EXPECT_EQ(code(first), 101);
    EXPECT_FALSE(recorder->is_busy());
    EXPECT_EQ(opened, std::vector<std::uint64_t>());
    EXPECT_EQ(events().size(), 8U) << "each is told";
}

TEST_F(RecorderTest, RefusesWhatMakesNoSense)
{
    const int handle = handles.issue();
    EXPECT_EQ(recorder->start(99, first, PS_RECORD_TYPE_NORMAL).result, -2);
    EXPECT_EQ(recorder->start(handle, first, PS_RECORD_TYPE_NONE).result, -2);
    EXPECT_EQ(recorder->start(handle, first, static_cast<ps_record_type_e>(6)).result, -2);
    EXPECT_TRUE(recorder->start(handle, first, PS_RECORD_TYPE_COMPOSITE).is_done());
    EXPECT_EQ(recorder->start(handle, second, PS_RECORD_TYPE_NORMAL).result, -2) << "the handle records";
    EXPECT_EQ(recorder->start(std::nullopt, first, PS_RECORD_TYPE_TIMER).result, 3);
    EXPECT_EQ(recorder->switch_to_record(handle).result, -2) << "it is no timeshift";
    EXPECT_EQ(recorder->stop_timeshift(first).reason, "this channel is not timeshifted");
    EXPECT_EQ(recorder->stop_any_timeshift().reason, "nothing is timeshifted");
    EXPECT_EQ(recorder->stop_recording(second).reason, "this channel is not recorded");
}

TEST_F(RecorderTest, LeavesNothingBehindWhereTheFileCannotBeMade)
{
    unreadable = first;
    EXPECT_EQ(recorder->start(std::nullopt, first, PS_RECORD_TYPE_NORMAL).result, 9);
    unreadable = 0;
    // Somebody else's info file is in the way.
    const std::string others = folder / "usb/20231114-221320-First.inf";
    std::ofstream(others) << "content";
    EXPECT_EQ(recorder->start(std::nullopt, first, PS_RECORD_TYPE_NORMAL).result, 11);
    EXPECT_FALSE(recorder->is_busy());
    EXPECT_FALSE(fs::exists(folder / "usb/20231114-221320-First.srf"));
    EXPECT_EQ(fs::file_size(others), 7U);
}

TEST_F(RecorderTest, ReceivesAsManyChannelsAsItHasTuners)
{
    EXPECT_EQ(recorder->precheck(second, PS_RECORD_TYPE_NORMAL), 0);
    start(second);
    EXPECT_EQ(recorder->precheck(radio, PS_RECORD_TYPE_NORMAL), 4) << "the first is being watched";
    EXPECT_EQ(recorder->precheck(first, PS_RECORD_TYPE_NORMAL), 0);
    EXPECT_TRUE(recorder->can_receive(radio)) << "by watching another channel";
    start(first);
    EXPECT_FALSE(recorder->can_receive(radio));
    EXPECT_TRUE(recorder->can_receive(second));
    EXPECT_EQ(recorder->channels(), (std::vector<std::uint64_t>{first, second}));
}

TEST_F(RecorderTest, KnowsAsManyTunersAsItIsTold)
{
    set_tuners(1);
    EXPECT_EQ(recorder->precheck(second, PS_RECORD_TYPE_NORMAL), 4);
    EXPECT_EQ(recorder->precheck(first, PS_RECORD_TYPE_NORMAL), 0);
    set_tuners(3);
    start(second);
    EXPECT_EQ(recorder->precheck(radio, PS_RECORD_TYPE_NORMAL), 0);
}

TEST_F(RecorderTest, ListsTimeshiftsBehindRecordings)
{
    start(first, PS_RECORD_TYPE_TIMESHIFT_PLAY);
    start(second);
    start(first);
    std::vector<int> listed;
    for (const RunningRecording *recording : recorder->running())
        listed.push_back(recording->handle);
    EXPECT_EQ(listed, (std::vector<int>{2, 3, 1}));
    EXPECT_EQ(recorder->newest()->handle, 3);
    EXPECT_EQ(recorder->either_of(first)->handle, 3);
}

TEST_F(RecorderTest, EndsARecordingWhoseSourceFails)
{
    start(first);
    const std::string path = recorder->recording_of(first)->file.path();
    pass(2s);
    feed.is_broken = true;
    pass(1s);
    EXPECT_EQ(events(), (Lines{"1 failed with 9", "1 will finish", "1 is PS_RECORD_STATE_STOP", "1 lasted 3 s",
                               "1 PS_RECORD_EXCEPTION 9", "1 is over", "busy or idle"}));
    EXPECT_EQ(fs::file_size(path), 2U * 500'000 / 188 * 188);
    EXPECT_EQ(int{info(path).record_complete}, 1);
    EXPECT_EQ(int{info(path).incomplete_reason}, source_failed);
    EXPECT_FALSE(recorder->is_last_complete(first));
}

TEST_F(RecorderTest, EndsARecordingWhoseDeviceIsFull)
{
    start(first);
    const std::string path = recorder->recording_of(first)->file.path();
    {
        const LimitedFileSize limit(2 * 500'000);
        pass(1s);
        EXPECT_EQ(events(), Lines());
        pass(2s);
    }
    EXPECT_EQ(events(), (Lines{"1 failed with 160", "1 will finish", "1 is PS_RECORD_STATE_STOP", "1 lasted 3 s",
                               "1 PS_RECORD_EXCEPTION 160", "1 is over", "busy or idle"}));
    EXPECT_EQ(fs::file_size(path), 2U * 500'000) << "it keeps what it has";
    EXPECT_EQ(int{info(path).record_complete}, 1);
    EXPECT_EQ(int{info(path).incomplete_reason}, device_was_full);
    EXPECT_FALSE(recorder->is_last_complete(first));
    start(first);
    EXPECT_TRUE(recorder->stop_recording(first).is_done()) << "others can be made";
}

TEST_F(RecorderTest, KnowsThatTheLastBitOfARecordingDidNotFit)
{
    start(first);
    const std::string path = recorder->recording_of(first)->file.path();
    pass(1s);
    now += 100ms; // no time to grow before the end
    const LimitedFileSize limit(520'000);
    EXPECT_TRUE(recorder->stop_recording(first).is_done());
    EXPECT_EQ(int{info(path).incomplete_reason}, device_was_full);
    EXPECT_FALSE(recorder->is_last_complete(first));
}

TEST_F(RecorderTest, GoesOnWithASourceThatIsLate)
{
    start(first);
    const std::string path = recorder->recording_of(first)->file.path();
    feed.rest = 188 * 10;
    pass(2s);
    EXPECT_EQ(fs::file_size(path), 1880U);
    feed.rest = std::nullopt;
    pass(1s);
    EXPECT_EQ(fs::file_size(path), 3U * 500'000 / 188 * 188);
}

TEST_F(RecorderTest, EndsWhatADeviceHeldThatIsPulledOut)
{
    start(first);
    pass(2s);
    fs::remove_all(folder / "usb");
    pass(1s);
    const Lines told = events();
    EXPECT_EQ(told.front(), "1 failed with 100");
    EXPECT_NE(std::find(told.begin(), told.end(), "1 PS_RECORD_EXCEPTION 100"), told.end());
    EXPECT_FALSE(recorder->is_busy());
    EXPECT_FALSE(recorder->is_last_complete(first));
}

TEST_F(RecorderTest, WarnsOnceThatTheDeviceIsNearlyFull)
{
    start(first);
    space = Devices::least_space - 1;
    pass(1s);
    pass(1s);
    EXPECT_EQ(events(), (Lines{"1 PS_RECORD_DISK_LESS_FIFTY 0"}));
    space = 1000;
    pass(1s);
    space = Devices::least_space - 1;
    pass(1s);
    EXPECT_EQ(events(), (Lines{"1 PS_RECORD_DISK_LESS_FIFTY 0"})) << "again once there was room";
}

TEST_F(RecorderTest, EndsItsRecordingsWithItself)
{
    start(first);
    const std::string path = recorder->recording_of(first)->file.path();
    now += 1500ms;
    recorder.reset();
    EXPECT_EQ(std::uint32_t{info(path).duration}, 1500U);
    EXPECT_EQ(int{info(path).record_complete}, 1);
    EXPECT_EQ(fs::file_size(path), 750'000U / 188 * 188);
}

TEST_F(RecorderTest, RemembersThePartsOfProgrammesThatItRecorded)
{
    start(first, PS_RECORD_TYPE_SEGMENT);
    const std::string path = recorder->recording_of(first)->file.path();
    EXPECT_EQ(recorder->take_segments(first), Lines()) << "it runs";
    recorder->stop_recording(first);
    EXPECT_EQ(recorder->take_segments(second), Lines());
    EXPECT_EQ(recorder->take_segments(first), (Lines{path}));
    EXPECT_EQ(recorder->take_segments(first), Lines());
}

TEST(RecordingFile, LeavesAloneWhatIsNoInfoFileAnyMore)
{
    const support::TemporaryFolder folder;
    RecordingFile file(folder / "a.srf", pvr_file_info_s{});
    fs::resize_file(folder / "a.inf", 100);
    file.finish(1000, is_whole, 0s);
    EXPECT_EQ(fs::file_size(folder / "a.inf"), 100U);
}

TEST(RecordingFile, TellsThatItCannotGrow)
{
    const support::TemporaryFolder folder;
    RecordingFile file(folder / "a.srf", pvr_file_info_s{});
    Feed feed;
    FedSource source(feed);
    const LimitedFileSize limit(188 * 4);
    try {
        file.grow(source, 188 * 10);
        FAIL() << "it grew";
    } catch (const std::system_error &error) {
        EXPECT_EQ(error.code(), std::errc::file_too_large);
    }
    EXPECT_EQ(fs::file_size(folder / "a.srf"), 188U * 4);
}

TEST(InfoFile, CutsTextsAtTheEndOfACharacter)
{
    char field[8];
    std::memset(field, 'x', sizeof field);
    set_text(field, sizeof field, "ab\xe2\x82\xac\xe2\x82\xac");
    EXPECT_STREQ(field, "ab\xe2\x82\xac");
    set_text(field, sizeof field, "1234567");
    EXPECT_STREQ(field, "1234567");
    set_text(field, sizeof field, "12345678");
    EXPECT_STREQ(field, "1234567");
}

TEST(InfoFile, KeepsApplicationsOutWhileItWrites)
{
    const support::TemporaryFolder folder;
    make_info(folder / "a.inf", pvr_file_info_s{});
    change_info(folder / "a.inf", [&](pvr_file_info_s &info) {
        const Descriptor other(open((folder / "a.inf").c_str(), O_RDONLY));
        EXPECT_EQ(flock(other.number(), LOCK_EX | LOCK_NB), -1);
        info.rating = 18;
    });
    EXPECT_EQ(int{read_info(folder / "a.inf")->rating}, 18);
    const Descriptor reader(open((folder / "a.inf").c_str(), O_RDONLY));
    ASSERT_EQ(flock(reader.number(), LOCK_EX), 0);
    EXPECT_THROW(change_info(folder / "a.inf", [](pvr_file_info_s &info) { info.rating = 6; }), std::system_error);
    EXPECT_EQ(int{read_info(folder / "a.inf")->rating}, 18)
        << "the service does not wait for ever, nor write regardless";
}
