// Timeshift, which holds so much and no more, with a clock that the test moves.
#include "recorder_fixture.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <string>
#include <unistd.h>

using namespace recorder_test;

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

class BoundedTimeshift : public RecorderTest {
protected:
    BoundedTimeshift()
    {
        longest_timeshift = 60s;
        set_tuners(2);
    }

    /// Where the first bytes lie that are kept.
    off_t first_data() const
    {
        const Descriptor reading(open(file.c_str(), O_RDONLY | O_CLOEXEC));
        return lseek(reading.number(), 0, SEEK_DATA);
    }

    static constexpr off_t rate = 23'500;      ///< bytes a second
    static constexpr off_t piece = 188 * 1024; ///< which is also whole blocks
    const std::string file = folder / "usb/timeshift.tmp";
};

TEST_F(BoundedTimeshift, GivesUpWhatIsOlderThanItHolds)
{
    start(radio, PS_RECORD_TYPE_TIMESHIFT_PLAY);
    const RunningRecording &shift = *recorder->timeshift_of(radio);
    pass_in_steps(60s);
    EXPECT_EQ(recorder->length(shift), 60s);
    EXPECT_EQ(recorder->given_up(shift), 0s);
    EXPECT_EQ(first_data(), 0);
    pass_in_steps(40s);
    EXPECT_EQ(recorder->length(shift), 60s);
    EXPECT_EQ(recorder->seconds(shift), 60);
    EXPECT_EQ(recorder->given_up(shift), 40s);
    EXPECT_EQ(fs::file_size(file), 100U * rate / 188 * 188) << "what is kept stays where it is";
    EXPECT_EQ(first_data(), 40 * rate / piece * piece);
    EXPECT_EQ(events(), Lines());
}

TEST_F(BoundedTimeshift, BecomesARecordingOfWhatThereStillIs)
{
    const int handle = start(radio, PS_RECORD_TYPE_TIMESHIFT_PLAY);
    pass_in_steps(100s);
    wall += 100;
    EXPECT_TRUE(recorder->switch_to_record(handle).is_done());
    EXPECT_EQ(recorder->seconds(*recorder->recording_of(radio)), 60);
    pass_in_steps(100s);
    wall += 100;
    EXPECT_EQ(recorder->seconds(*recorder->recording_of(radio)), 160) << "nothing more is given up";
    recorder->stop(handle);
    const std::string path = folder / "usb/20231114-221500-Radio-Three.srf";
    EXPECT_EQ(fs::file_size(path), 160U * rate / 188 * 188);
    EXPECT_EQ(std::uint32_t{info(path).duration}, 160'000U);
    EXPECT_EQ(std::uint32_t{info(path).start_time}, noon + 40U);
    std::ifstream stream(path);
    const std::string content{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_EQ(content.find('\0'), std::string::npos) << "what was given up is not part of it";
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "usb"), fs::directory_iterator()), 2) << "the two files";
}

TEST_F(BoundedTimeshift, StaysWhereNoRecordingCanBeMadeOfIt)
{
    const int handle = start(radio, PS_RECORD_TYPE_TIMESHIFT_PLAY);
    pass_in_steps(100s);
    std::ofstream(folder / "usb/20231114-221320-Radio-Three.inf") << "somebody else's";
    EXPECT_EQ(recorder->switch_to_record(handle).result, 11);
    pass_in_steps(10s);
    EXPECT_EQ(recorder->given_up(*recorder->timeshift_of(radio)), 50s);
    EXPECT_EQ(fs::file_size(file), 110U * rate / 188 * 188);
    EXPECT_FALSE(fs::exists(folder / "usb/20231114-221320-Radio-Three.srf"));
    EXPECT_FALSE(fs::exists(folder / "usb/timeshift.new"));
}

TEST_F(BoundedTimeshift, LastsAsLongAsItIsToldFromItsVeryBeginning)
{
    start(radio, PS_RECORD_TYPE_TIMESHIFT_PLAY);
    pass_in_steps(100s);
    EXPECT_FALSE(recorder->set_duration(recorder->timeshift_of(radio), 100).is_done());
    EXPECT_TRUE(recorder->set_duration(recorder->timeshift_of(radio), 120).is_done());
    pass_in_steps(19s);
    EXPECT_NE(recorder->timeshift_of(radio), nullptr);
    events();
    pass_in_steps(1s);
    EXPECT_EQ(events(), (Lines{"1 will finish", "1 is PS_RECORD_STATE_STOP", "1 lasted 60 s", "1 PS_RECORD_STOP 0",
                               "1 is over", "busy or idle"}));
    EXPECT_TRUE(fs::is_empty(folder / "usb"));
}

TEST_F(BoundedTimeshift, KeepsWhatHasNotComeYetFromASourceThatIsLate)
{
    feed.rest = 188 * 1000;
    start(radio, PS_RECORD_TYPE_TIMESHIFT_PLAY);
    pass_in_steps(100s);
    EXPECT_EQ(fs::file_size(file), 188'000U);
    feed.rest = std::nullopt;
    pass_in_steps(1s);
    EXPECT_EQ(fs::file_size(file), 101U * rate / 188 * 188);
}
