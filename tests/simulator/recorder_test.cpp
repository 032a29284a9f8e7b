// Recordings and timeshift, with a clock that the test moves, folders that are devices, and a source that the test
// feeds.
#include "recorder.h"

#include "events/names.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <string>
#include <sys/file.h>
#include <sys/resource.h>
#include <system_error>
#include <utility>
#include <vector>

using namespace simulator;
using namespace std::chrono_literals;

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr std::uint64_t first = 1;
constexpr std::uint64_t second = 2;
constexpr std::uint64_t radio = 3;
constexpr std::int64_t noon = 1'700'000'000; // 2023-11-14 22:13:20 UTC

/// As many bytes as it is asked for, or as the test lets come.
struct Feed {
    std::optional<std::size_t> rest{};
    bool is_broken = false;
};

class FedSource : public Source {
public:
    explicit FedSource(Feed &feed) : feed_(feed) {}
    std::size_t read(std::span<std::uint8_t> room) override
    {
        if (feed_.is_broken)
            throw std::system_error(ENODATA, std::generic_category(), "the feed");
        const std::size_t count = std::min(room.size(), feed_.rest.value_or(room.size()));
        if (feed_.rest)
            *feed_.rest -= count;
        std::fill_n(room.begin(), count, std::uint8_t{0x47});
        return count;
    }
    StreamDescription description() const override { return {7, 0x21, 0x22, 0x23}; }

private:
    Feed &feed_;
};

/// No file grows beyond a size, as on a device that is full.
class LimitedFileSize {
public:
    explicit LimitedFileSize(rlim_t size) : action_(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{size, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~LimitedFileSize()
    {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, action_);
    }
    LimitedFileSize(const LimitedFileSize &) = delete;
    LimitedFileSize &operator=(const LimitedFileSize &) = delete;

private:
    void (*action_)(int);
    rlimit before_{};
};

std::string line(const RecordingEvent &event)
{
    const std::string state = pvr::_get_pvr_macro_name(pvr::ps_record_state_e_str, event.state);
    const std::string type = pvr::_get_pvr_macro_name(pvr::ps_record_type_e_str, event.type);
    const std::string method = pvr::_get_pvr_macro_name(pvr::ps_method_e_str, event.method);
    const std::string words[] = {"will start",
                                 method + " " + std::to_string(event.result),
                                 "is " + state,
                                 "is " + type,
                                 "will finish",
                                 "failed with " + std::to_string(event.result),
                                 "lasted " + std::to_string(event.seconds) + " s",
                                 "is over",
                                 "lasts " + std::to_string(event.seconds) + " s",
                                 ""};
    if (event.kind == RecordingEvent::became_busy)
        return "busy or idle";
    return std::to_string(event.handle) + " " + words[event.kind];
}

class RecorderTest : public testing::Test {
protected:
    RecorderTest()
    {
        fs::create_directory(folder / "usb");
        devices.emplace(
            std::vector<DeviceDescription>{{"usb", folder / "usb"}}, [this] { return now; },
            [this](const std::string &) {
                return Space{space, 1000};
            },
            [this](const DeviceEvent &event) {
                if (event.kind == DeviceEvent::left)
                    recorder->lose_device(event.handle);
            });
        set_tuners(2);
    }

    void set_tuners(int count)
    {
        recorder.reset();
        recorder.emplace(
            Recorder::Surroundings{handles, channels, *devices, [this] { return now; }, [this] { return wall; },
                                   [this](const Channel &channel) {
                                       opened.push_back(channel.service_id);
                                       if (unreadable == channel.service_id)
                                           throw std::system_error(ENOENT, std::generic_category(), "/gone");
                                       return std::make_unique<FedSource>(feed);
                                   },
                                   [this](int) { return channel_number; }},
            count, [this](const RecordingEvent &event) { events_.push_back(line(event)); });
    }

    Lines events() { return std::exchange(events_, {}); }

    void pass(Microseconds time)
    {
        now += time;
        devices->advance();
        recorder->advance();
    }

    /// Lets time pass as timers do: nothing is noticed later than it is due.
    void pass_in_steps(Microseconds time)
    {
        const Microseconds end = now + time;
        while (recorder->due() && *recorder->due() <= end) {
            now = std::max(now, *recorder->due());
            recorder->advance();
        }
        now = end;
    }

    int start(std::uint64_t channel = first, ps_record_type_e type = PS_RECORD_TYPE_NORMAL)
    {
        EXPECT_EQ(recorder->start(std::nullopt, channel, type).reason, "");
        events();
        return recorder->either_of(channel)->handle;
    }

    pvr_file_info_s info(const std::string &path)
    {
        const auto found = read_info(with_extension(path, "inf"));
        EXPECT_TRUE(found) << path;
        return found.value_or(pvr_file_info_s{});
    }

private:
    Lines events_; // the recorder tells of its end

protected:
    support::TemporaryFolder folder;
    Microseconds now = 1000s;
    std::int64_t wall = noon;
    std::int64_t space = 1000;
    std::uint64_t unreadable = 0;
    std::string channel_number;
    std::vector<std::uint64_t> opened;
    Feed feed;
    Handles handles;
    Channels channels{built_in_channels(), [this] { return wall; }};
    std::optional<Devices> devices;
    std::optional<Recorder> recorder;
};

} // namespace

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
    EXPECT_LT(fs::file_size(path), 60U * 500'000) << "not all at once";
    EXPECT_EQ(recorder->due(), now) << "but at once";
    pass_in_steps(0s);
    for (int step = 0; step < 10; ++step)
        recorder->advance();
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

TEST_F(RecorderTest, KeepsATimeshiftForAsLongAsItRuns)
{
    const int handle = start(first, PS_RECORD_TYPE_TIMESHIFT_PLAY);
    pass(3s);
    EXPECT_EQ(fs::file_size(folder / "usb/timeshift.tmp"), 3U * 500'000 / 188 * 188);
    EXPECT_TRUE(fs::exists(folder / "usb/timeshift.inf"));
    EXPECT_EQ(recorder->recording_of(first), nullptr);
    EXPECT_EQ(recorder->timeshift_of(first)->handle, handle);
    EXPECT_EQ(recorder->precheck(second, PS_RECORD_TYPE_TIMESHIFT_PLAY), 3) << "there is one already";
    recorder->set_timeshift_type(handle, PS_RECORD_TYPE_TIMESHIFT_PAUSE);
    recorder->set_timeshift_type(handle, PS_RECORD_TYPE_TIMESHIFT_PAUSE);
    EXPECT_EQ(events(), (Lines{"1 is PS_RECORD_TYPE_TIMESHIFT_PAUSE"}));
    EXPECT_TRUE(recorder->stop_timeshift(first).is_done());
    EXPECT_EQ(folder.names(), (Lines{"usb"}));
    EXPECT_TRUE(fs::is_empty(folder / "usb"));
}

TEST_F(RecorderTest, TakesThePlaceOfATimeshiftThatACrashHasLeft)
{
    std::ofstream(folder / "usb/timeshift.tmp") << "content";
    std::ofstream(folder / "usb/timeshift.inf") << "content";
    start(first, PS_RECORD_TYPE_TIMESHIFT_PLAY);
    EXPECT_EQ(fs::file_size(folder / "usb/timeshift.tmp"), 0U);
    EXPECT_TRUE(recorder->stop_any_timeshift().is_done());
}

TEST_F(RecorderTest, MakesARecordingOfATimeshift)
{
    const int handle = start(first, PS_RECORD_TYPE_TIMESHIFT_PLAY);
    pass(3s);
    EXPECT_TRUE(recorder->switch_to_record(handle).is_done());
    EXPECT_EQ(events(), (Lines{"1 PS_SWITCH_TO_RECORD 0", "1 is PS_RECORD_TYPE_NORMAL"}));
    pass(2s);
    ASSERT_NE(recorder->recording_of(first), nullptr);
    recorder->stop(handle);
    const std::string path = folder / "usb/20231114-221320-First.srf";
    EXPECT_EQ(fs::file_size(path), 5U * 500'000 / 188 * 188) << "with what was there before";
    EXPECT_EQ(std::uint32_t{info(path).duration}, 5000U);
    EXPECT_FALSE(fs::exists(folder / "usb/timeshift.tmp"));
    EXPECT_FALSE(fs::exists(folder / "usb/timeshift.inf"));
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
    file.finish(1000, is_whole);
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
