// Recordings that are set for later, with a clock that the test moves.
#include "timer_recordings.h"

#include "recorder_fixture.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>

using namespace recorder_test;

namespace {

class TimerRecordingsTest : public RecorderTest {
protected:
    /// Lets time pass as the set does: what is due happens at its moment.
    void live(Microseconds time)
    {
        const Microseconds end = now + time;
        for (;;) {
            std::optional<Microseconds> moment = timers.due();
            if (const auto other = recorder->due(); other && (!moment || *other < *moment))
                moment = other;
            if (!moment || *moment > end)
                break;
            now = std::max(now, *moment);
            recorder->advance();
            timers.advance();
        }
        now = end;
    }

    TimerRecordings timers{*recorder, [this] { return now; }};
};

} // namespace

TEST_F(TimerRecordingsTest, StartAndEndByTheClock)
{
    EXPECT_EQ(timers.due(), std::nullopt);
    EXPECT_EQ(timers.set(first, 100, 60), 1U);
    EXPECT_EQ(timers.due(), now + 100s);
    live(99s);
    EXPECT_FALSE(recorder->is_busy());
    EXPECT_EQ(events(), Lines());
    live(1s);
    ASSERT_NE(recorder->recording_of(first), nullptr);
    EXPECT_EQ(recorder->recording_of(first)->type, PS_RECORD_TYPE_TIMER);
    const std::string path = recorder->recording_of(first)->file.path();
    EXPECT_EQ(events(), (Lines{"busy or idle", "1 will start", "1 is PS_RECORD_STATE_PREPARING", "1 PS_RECORD_START 0",
                               "1 is PS_RECORD_STATE_REC", "1 lasts 60 s"}));
    live(3600s);
    EXPECT_EQ(events(), (Lines{"1 will finish", "1 is PS_RECORD_STATE_STOP", "1 lasted 60 s", "1 PS_RECORD_STOP 0",
                               "1 is over", "busy or idle"}));
    EXPECT_EQ(std::uint32_t{info(path).duration}, 60'000U);
    EXPECT_EQ(fs::file_size(path), 60U * 500'000 / 188 * 188);
    EXPECT_EQ(timers.due(), std::nullopt);
}

TEST_F(TimerRecordingsTest, GoOnUntilTheyAreStoppedWithoutADuration)
{
    timers.set(first, 0, 0);
    ASSERT_NE(recorder->recording_of(first), nullptr) << "at once, when it is for now";
    live(20s);
    EXPECT_EQ(recorder->seconds(*recorder->recording_of(first)), 20);
}

TEST_F(TimerRecordingsTest, TellWhyTheyCannotStart)
{
    const auto told = [&](std::uint64_t channel) {
        timers.set(channel, 10, 5);
        live(10s);
        const Lines lines = events();
        return lines.empty() ? "" : lines.front();
    };
    channels.set_date(false);
    EXPECT_EQ(told(first), "0 PS_RECORD_START 251");
    channels.set_date(true);
    start(second);
    EXPECT_EQ(told(second), "0 PS_RECORD_START 3");
    EXPECT_EQ(told(radio), "0 PS_RECORD_START 4");
    recorder->stop_recording(second);
    events();
    EXPECT_EQ(told(6), "0 PS_RECORD_START 102");
    unreadable = first;
    EXPECT_EQ(told(first), "0 PS_RECORD_START 9");
    space = 0;
    EXPECT_EQ(told(first), "0 PS_RECORD_START 160");
    fs::remove_all(folder / "usb");
    devices->advance();
    EXPECT_EQ(told(first), "0 PS_RECORD_START 101");
    EXPECT_FALSE(recorder->is_busy());
    EXPECT_FALSE(timers.cancel(1).is_done()) << "it is over";
}

TEST_F(TimerRecordingsTest, FollowOneAnotherOnTheSameTuner)
{
    set_tuners(1);
    timers.set(first, 10, 20);
    timers.set(first, 30, 20);
    live(30s);
    const Lines told = events();
    EXPECT_EQ(std::count(told.begin(), told.end(), "1 PS_RECORD_STOP 0"), 1);
    EXPECT_EQ(std::count(told.begin(), told.end(), "2 PS_RECORD_START 0"), 1);
    live(20s);
    EXPECT_FALSE(recorder->is_busy());
}

TEST_F(TimerRecordingsTest, CanBeForgottenBeforeTheyStartAndStoppedWhileTheyRun)
{
    EXPECT_EQ(timers.set(first, 10, 100), 1U);
    EXPECT_EQ(timers.set(second, 10, 100), 2U);
    EXPECT_TRUE(timers.cancel(1).is_done());
    EXPECT_EQ(timers.cancel(1).reason, "no such timer recording");
    EXPECT_EQ(events(), Lines());
    live(20s);
    EXPECT_EQ(recorder->recording_of(first), nullptr);
    ASSERT_NE(recorder->recording_of(second), nullptr);
    events();
    EXPECT_TRUE(timers.cancel(2).is_done());
    EXPECT_FALSE(recorder->is_busy());
    EXPECT_EQ(events(), (Lines{"1 will finish", "1 is PS_RECORD_STATE_STOP", "1 lasted 10 s", "1 PS_RECORD_STOP 0",
                               "1 is over", "busy or idle"}));
    EXPECT_FALSE(timers.cancel(2).is_done());
    EXPECT_FALSE(timers.cancel(3).is_done());
}

TEST_F(TimerRecordingsTest, LeaveAloneAnotherRecordingOfTheirChannel)
{
    timers.set(first, 10, 100);
    live(20s);
    recorder->stop_recording(first);
    start(first);
    EXPECT_FALSE(timers.cancel(1).is_done());
    EXPECT_NE(recorder->recording_of(first), nullptr);
}

TEST_F(TimerRecordingsTest, AreBoundedInTimeAndNumber)
{
    constexpr std::uint64_t year = TimerRecordings::longest;
    EXPECT_EQ(timers.set(first, year + 1, 1), std::nullopt);
    EXPECT_EQ(timers.set(first, 1, year + 1), std::nullopt);
    EXPECT_EQ(timers.set(first, ~std::uint64_t{0}, ~std::uint64_t{0}), std::nullopt);
    for (std::size_t i = 1; i <= TimerRecordings::most; ++i)
        EXPECT_EQ(timers.set(first, year, year), i);
    EXPECT_EQ(timers.set(first, 1, 1), std::nullopt);
    EXPECT_TRUE(timers.cancel(1).is_done());
    EXPECT_EQ(timers.set(first, 1, 1), TimerRecordings::most + 1);
}
