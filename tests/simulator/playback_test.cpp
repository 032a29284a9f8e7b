// Where a playback is, as a clock that the test moves goes on.
#include "playback.h"

#include <gtest/gtest.h>

using namespace simulator;
using namespace std::chrono_literals;

namespace {

/// A moment far from zero: nothing may depend on where the clock began.
constexpr Microseconds start_of_time = 123456789s;
constexpr Microseconds hour = 1h;

Playback playing_from(Microseconds position) { return {hour, position, start_of_time}; }

} // namespace

TEST(Playback, GoesOnWithTheClock)
{
    const Playback playback = playing_from(10s);
    EXPECT_EQ(playback.state(), PLAY_STATE_PLAY);
    EXPECT_EQ(playback.position(start_of_time), 10s);
    EXPECT_EQ(playback.position(start_of_time + 2500ms), 12500ms);
}

TEST(Playback, StartsWithinTheRecordingWhateverItWasTold)
{
    EXPECT_EQ(playing_from(hour + 1s).position(start_of_time), hour);
    EXPECT_EQ(playing_from(-1s).position(start_of_time), 0s);
}

TEST(Playback, HoldsItsPositionWhilePaused)
{
    Playback playback = playing_from(10s);
    playback.change_to(PLAY_STATE_PAUSE, start_of_time + 5s);
    EXPECT_EQ(playback.position(start_of_time + 500s), 15s);
    EXPECT_EQ(playback.arrival(), std::nullopt);
    playback.change_to(PLAY_STATE_PLAY, start_of_time + 500s);
    EXPECT_EQ(playback.position(start_of_time + 501s), 16s);
}

TEST(Playback, WindsAtTheSpeedOfItsType)
{
    const struct {
        int type;
        ps_play_state_e forward;
        ps_play_state_e rewind;
        Microseconds in_eight_seconds;
    } types[] = {
        {1, PLAY_STATE_FF_1, PLAY_STATE_REW_1, 16s},    {2, PLAY_STATE_FF_2, PLAY_STATE_REW_2, 32s},
        {3, PLAY_STATE_FF_3, PLAY_STATE_REW_3, 64s},    {4, PLAY_STATE_FF_4, PLAY_STATE_REW_4, 128s},
        {5, PLAY_STATE_FF_5, PLAY_STATE_REW_5, 256s},   {6, PLAY_STATE_FF_6, PLAY_STATE_REW_6, 512s},
        {7, PLAY_STATE_FF_7, PLAY_STATE_REW_7, 1024s},  {8, PLAY_STATE_FF_1_2, PLAY_STATE_REW_1_2, 4s},
        {9, PLAY_STATE_FF_1_4, PLAY_STATE_REW_1_4, 2s}, {10, PLAY_STATE_FF_1_8, PLAY_STATE_REW_1_8, 1s},
    };
    for (const auto &[type, forward, rewind, distance] : types) {
        SCOPED_TRACE(type);
        ASSERT_EQ(forward_state(type), forward);
        ASSERT_EQ(rewind_state(type), rewind);
        Playback ahead = playing_from(1800s);
        ahead.change_to(forward, start_of_time);
        EXPECT_EQ(ahead.position(start_of_time + 8s), 1800s + distance);
        EXPECT_FALSE(ahead.runs_backwards());
        Playback back = playing_from(1800s);
        back.change_to(rewind, start_of_time);
        EXPECT_EQ(back.position(start_of_time + 8s), 1800s - distance);
        EXPECT_TRUE(back.runs_backwards());
    }
}

TEST(Playback, KnowsNoOtherTypesOfWinding)
{
    for (const int type : {-2147483647 - 1, -1, 0, 11, 2147483647}) {
        EXPECT_EQ(forward_state(type), std::nullopt) << type;
        EXPECT_EQ(rewind_state(type), std::nullopt) << type;
    }
}

TEST(Playback, ChangesSpeedWhereItIs)
{
    Playback playback = playing_from(100s);
    playback.change_to(PLAY_STATE_FF_3, start_of_time + 1s);
    playback.change_to(PLAY_STATE_REW_1, start_of_time + 3s);
    EXPECT_EQ(playback.position(start_of_time + 4s), 100s + 1s + 16s - 2s);
}

TEST(Playback, KeepsItsStateWhenItIsMoved)
{
    Playback playback = playing_from(100s);
    playback.change_to(PLAY_STATE_FF_1, start_of_time);
    playback.move_to(10s, start_of_time + 5s);
    EXPECT_EQ(playback.state(), PLAY_STATE_FF_1);
    EXPECT_EQ(playback.position(start_of_time + 6s), 12s);
    playback.move_to(-1s, start_of_time + 6s);
    EXPECT_EQ(playback.position(start_of_time + 6s), 0s);
    playback.move_to(hour + 1s, start_of_time + 6s);
    EXPECT_EQ(playback.position(start_of_time + 6s), hour);
}

TEST(Playback, StandsStillOneFrameFurtherOnAfterAStep)
{
    Playback playback = playing_from(10s);
    playback.step(start_of_time + 1s);
    EXPECT_EQ(playback.state(), PLAY_STATE_FRAME_STEP);
    EXPECT_EQ(playback.position(start_of_time + 100s), 11040ms);
    playback.step(start_of_time + 200s);
    EXPECT_EQ(playback.position(start_of_time + 300s), 11080ms);
    playback.move_to(hour - 10ms, start_of_time + 300s);
    playback.step(start_of_time + 300s);
    EXPECT_EQ(playback.position(start_of_time + 300s), hour);
}

TEST(Playback, NeverLeavesTheRecording)
{
    Playback playback = playing_from(10s);
    EXPECT_EQ(playback.position(start_of_time + 1000h), hour);
    playback.change_to(PLAY_STATE_REW_7, start_of_time);
    EXPECT_EQ(playback.position(start_of_time + 1000h), 0s);
}

TEST(Playback, KnowsWhenItArrives)
{
    Playback playback = playing_from(hour - 10s);
    EXPECT_EQ(playback.arrival(), start_of_time + 10s);
    playback.change_to(PLAY_STATE_FF_1_8, start_of_time + 2s);
    EXPECT_EQ(playback.arrival(), start_of_time + 2s + 64s);
    playback.change_to(PLAY_STATE_REW_5, start_of_time + 2s);
    EXPECT_EQ(playback.arrival(), start_of_time + 2s + (hour - 8s) / 32);
}

TEST(Playback, IsAtTheEndAtItsArrivalAlsoWhenTheSpeedDoesNotDivideTheWay)
{
    for (int type = 1; type <= 10; ++type) {
        Playback playback(1000001us, 0s, start_of_time);
        playback.change_to(*forward_state(type), start_of_time);
        EXPECT_EQ(playback.position(*playback.arrival()), 1000001us) << type;
        EXPECT_LT(playback.position(*playback.arrival() - 8us), 1000001us) << type;
        playback.move_to(1000001us, start_of_time);
        playback.change_to(*rewind_state(type), start_of_time);
        EXPECT_EQ(playback.position(*playback.arrival()), 0us) << type;
        EXPECT_GT(playback.position(*playback.arrival() - 8us), 0us) << type;
    }
}

TEST(Playback, CountsFromABeginningThatIsLost)
{
    Playback playback(100s, 30s, 0s);
    playback.lose_beginning(10s, 5s);
    EXPECT_EQ(playback.length(), 90s);
    EXPECT_EQ(playback.position(5s), 25s);
    EXPECT_EQ(playback.position(6s), 26s) << "it goes on";
    playback.change_to(PLAY_STATE_PAUSE, 6s);
    playback.lose_beginning(40s, 6s);
    EXPECT_EQ(playback.position(60s), 0s);
    playback.lose_beginning(400s, 60s);
    EXPECT_EQ(playback.length(), 0s);
    EXPECT_EQ(playback.position(61s), 0s);
}
