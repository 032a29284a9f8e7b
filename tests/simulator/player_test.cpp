// Handles and the decoder, with a clock that the test moves and recordings that are no files.
#include "player.h"

#include "events/names.h"

#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace simulator;
using namespace std::chrono_literals;

namespace {

using Lines = std::vector<std::string>;

std::string name_of(ps_play_state_e state) { return pvr::_get_pvr_macro_name(pvr::ps_play_state_e_str, state); }
std::string name_of(ps_method_e method) { return pvr::_get_pvr_macro_name(pvr::ps_method_e_str, method); }

std::string line(const PlaybackEvent &event)
{
    const std::map<PlaybackEvent::Kind, std::string> kinds{
        {PlaybackEvent::answered, name_of(event.command) + " " + std::to_string(event.result)},
        {PlaybackEvent::will_start, "will start"},
        {PlaybackEvent::will_wind, "will wind"},
        {PlaybackEvent::will_skip, "will skip"},
        {PlaybackEvent::changed, "is"},
        {PlaybackEvent::reached_beginning, "at its beginning"},
        {PlaybackEvent::reached_end, "at its end"},
        {PlaybackEvent::is_over, "is over"},
        {PlaybackEvent::failed, "failed with " + std::to_string(event.result)},
        {PlaybackEvent::became_busy, event.result != 0 ? "busy" : "idle"},
    };
    if (event.kind == PlaybackEvent::became_busy)
        return kinds.at(event.kind);
    return std::to_string(event.handle) + " " + kinds.at(event.kind) + " " + name_of(event.state) + " " +
           std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(event.position).count()) + " " +
           event.uri;
}

class PlayerTest : public testing::Test {
protected:
    static constexpr int refused = -2;

    Lines events() { return std::exchange(events_, {}); }

    /// A handle that plays the recording from a second on; what was told of it is forgotten.
    int play(int second)
    {
        const int handle = player.get_handle();
        EXPECT_TRUE(player.start(handle, "/a.srf", second).is_done());
        events();
        return handle;
    }

    /// Has the time pass, noticed as it would be by a timer.
    void pass(Microseconds time)
    {
        now += time;
        player.advance();
    }

    void expect_refusal(const Outcome &outcome, const std::string &reason)
    {
        EXPECT_EQ(outcome.result, refused);
        EXPECT_EQ(outcome.reason, reason);
    }

    Microseconds now = 1000s;
    std::map<std::string, Recording> recordings{
        {"/a.srf", {"/a.srf", 100s, 5000s}},
        {"file:///b.srf", {"/b.srf", 10s, 6000s}},
    };
    std::map<std::string, Extent> growing; ///< what there is so far of what is still being written
    Handles handles;
    Player player{handles, [this] { return now; },
                  [this](const std::string &uri) {
                      const auto found = recordings.find(uri);
                      if (found == recordings.end())
                          throw Unplayable(PS_NO_SUCH_FILE_OR_DIRECTORY, "gone");
                      return found->second;
                  },
                  [this](const std::string &path) {
                      const auto found = growing.find(path);
                      return found != growing.end() ? std::optional(found->second) : std::nullopt;
                  },
                  [this](const PlaybackEvent &event) { events_.push_back(line(event)); }};

private:
    Lines events_;
};

} // namespace

TEST_F(PlayerTest, IssuesHandlesFromOneOn)
{
    EXPECT_EQ(player.get_handle(), 1);
    EXPECT_EQ(player.get_handle(), 2);
    EXPECT_TRUE(player.release(1).is_done());
    EXPECT_EQ(player.get_handle(), 3);
    expect_refusal(player.release(1), "no such handle");
    EXPECT_EQ(events(), Lines());
}

TEST_F(PlayerTest, StartsWhereItIsTold)
{
    const int handle = player.get_handle();
    EXPECT_TRUE(player.start(handle, "/a.srf", 30).is_done());
    EXPECT_EQ(events(), (Lines{
                            "1 will start PLAY_STATE_NONE 30000 /a.srf",
                            "busy",
                            "1 PS_PLAY_START 0 PLAY_STATE_PLAY 30000 /a.srf",
                            "1 is PLAY_STATE_PLAY 30000 /a.srf",
                        }));
    EXPECT_EQ(player.uri(handle), "/a.srf");
    EXPECT_EQ(player.state(), PLAY_STATE_PLAY);
}

TEST_F(PlayerTest, TellsProgressInWholeSecondsAndWhenThatWasBroadcast)
{
    const int handle = play(30);
    pass(1999ms);
    const auto progress = player.progress(handle);
    ASSERT_TRUE(progress);
    EXPECT_EQ(progress->state, PLAY_STATE_PLAY);
    EXPECT_EQ(progress->relative_second, 31);
    EXPECT_EQ(progress->absolute_second, 5000 - 100 + 31);
    EXPECT_FALSE(player.progress(handle + 1));
    player.stop(handle);
    EXPECT_FALSE(player.progress(handle));
}

TEST_F(PlayerTest, PausesAndResumes)
{
    const int handle = play(30);
    now += 5s;
    EXPECT_TRUE(player.pause(handle).is_done());
    pass(60s);
    EXPECT_TRUE(player.pause(handle).is_done()); // it is paused already: nothing changes
    EXPECT_TRUE(player.resume(handle).is_done());
    EXPECT_EQ(events(), (Lines{
                            "1 PS_PLAY_PAUSE 0 PLAY_STATE_PAUSE 35000 /a.srf",
                            "1 is PLAY_STATE_PAUSE 35000 /a.srf",
                            "1 PS_PLAY_PAUSE 0 PLAY_STATE_PAUSE 35000 /a.srf",
                            "1 PS_PLAY_RESUME 0 PLAY_STATE_PLAY 35000 /a.srf",
                            "1 is PLAY_STATE_PLAY 35000 /a.srf",
                        }));
}

TEST_F(PlayerTest, WindsAndResumes)
{
    const int handle = play(30);
    EXPECT_TRUE(player.forward(handle, 2).is_done());
    now += 10s;
    EXPECT_TRUE(player.rewind(handle, 8).is_done());
    now += 10s;
    EXPECT_TRUE(player.resume(handle).is_done());
    EXPECT_EQ(events(), (Lines{
                            "1 will wind PLAY_STATE_PLAY 30000 /a.srf",
                            "1 PS_PLAY_FORWARD 0 PLAY_STATE_FF_2 30000 /a.srf",
                            "1 is PLAY_STATE_FF_2 30000 /a.srf",
                            "1 will wind PLAY_STATE_FF_2 70000 /a.srf",
                            "1 PS_PLAY_REWIND 0 PLAY_STATE_REW_1_2 70000 /a.srf",
                            "1 is PLAY_STATE_REW_1_2 70000 /a.srf",
                            "1 PS_PLAY_RESUME 0 PLAY_STATE_PLAY 65000 /a.srf",
                            "1 is PLAY_STATE_PLAY 65000 /a.srf",
                        }));
}

TEST_F(PlayerTest, SkipsWithinTheRecording)
{
    const int handle = play(30);
    const struct {
        int type;
        int second;
        int percent;
        std::string position;
    } skips[] = {
        {0, 50, 0, "50000"}, {1, 20, 0, "70000"},   {2, 25, 0, "45000"},           {3, 0, 10, "10000"},
        {2, 11, 0, "0"},     {0, -1, 0, "0"},       {1, 2147483647, 0, "100000"},  {2, 2147483647, 0, "0"},
        {3, 0, -1, "0"},     {3, 0, 101, "100000"}, {2, -2147483647, 0, "100000"}, {3, 0, 2147483647, "100000"},
    };
    player.pause(handle);
    events();
    for (const auto &[type, second, percent, position] : skips) {
        EXPECT_TRUE(player.skip(handle, type, second, percent).is_done());
        EXPECT_EQ(events().back(), "1 PS_PLAY_SKIP 0 PLAY_STATE_PAUSE " + position + " /a.srf")
            << type << " " << second;
    }
}

TEST_F(PlayerTest, AnnouncesASkip)
{
    const int handle = play(30);
    EXPECT_TRUE(player.skip(handle, 1, 10, 0).is_done());
    EXPECT_EQ(events(), (Lines{
                            "1 will skip PLAY_STATE_PLAY 30000 /a.srf",
                            "1 PS_PLAY_SKIP 0 PLAY_STATE_PLAY 40000 /a.srf",
                        }));
}

TEST_F(PlayerTest, StepsFrameByFrame)
{
    const int handle = play(30);
    EXPECT_TRUE(player.step_frame(handle).is_done());
    now += 10s;
    EXPECT_TRUE(player.step_frame(handle).is_done());
    EXPECT_EQ(events(), (Lines{
                            "1 PS_STEP_FRAME 0 PLAY_STATE_FRAME_STEP 30040 /a.srf",
                            "1 is PLAY_STATE_FRAME_STEP 30040 /a.srf",
                            "1 PS_STEP_FRAME 0 PLAY_STATE_FRAME_STEP 30080 /a.srf",
                        }));
}

TEST_F(PlayerTest, StopsAndKeepsTheHandle)
{
    const int handle = play(30);
    now += 5s;
    EXPECT_TRUE(player.stop(handle).is_done());
    const Lines stopped{
        "1 PS_PLAY_STOP 0 PLAY_STATE_STOP 35000 /a.srf",
        "1 is PLAY_STATE_STOP 35000 /a.srf",
        "1 is over PLAY_STATE_STOP 35000 /a.srf",
        "idle",
    };
    EXPECT_EQ(events(), stopped);
    EXPECT_EQ(player.uri(handle), "");
    EXPECT_EQ(player.state(), PLAY_STATE_NONE);
    EXPECT_TRUE(player.start(handle, "/a.srf", 35).is_done());
    events();
    EXPECT_TRUE(player.stop_all().is_done());
    EXPECT_EQ(events(), stopped);
    EXPECT_TRUE(player.stop_all().is_done());
    EXPECT_EQ(events(), Lines());
}

TEST_F(PlayerTest, StopsAPlaybackByAnyNameOfItsFile)
{
    const int handle = player.get_handle();
    for (const std::string name : {"file:///b.srf", "/b.srf", "file:/b.srf"}) {
        player.start(handle, "file:///b.srf", 0);
        EXPECT_TRUE(player.stop_uri(name).is_done()) << name;
        EXPECT_FALSE(player.is_playing());
    }
    player.start(handle, "file:///b.srf", 0);
    events();
    for (const std::string name : {"", "/a.srf", "b.srf", "file://elsewhere/b.srf"})
        expect_refusal(player.stop_uri(name), "it does not play");
    EXPECT_EQ(events(), Lines());
}

TEST_F(PlayerTest, StopsThePlaybackOfAReleasedHandle)
{
    const int handle = play(30);
    EXPECT_TRUE(player.release(handle).is_done());
    EXPECT_EQ(events(), (Lines{
                            "1 is PLAY_STATE_STOP 30000 /a.srf",
                            "1 is over PLAY_STATE_STOP 30000 /a.srf",
                            "idle",
                        }));
}

TEST_F(PlayerTest, PlaysOneRecordingAtATime)
{
    const int first = play(30);
    const int second = player.get_handle();
    EXPECT_TRUE(player.start(second, "file:///b.srf", 2).is_done());
    EXPECT_EQ(events(), (Lines{
                            "1 is PLAY_STATE_STOP 30000 /a.srf",
                            "1 is over PLAY_STATE_STOP 30000 /a.srf",
                            "2 will start PLAY_STATE_NONE 2000 file:///b.srf",
                            "2 PS_PLAY_START 0 PLAY_STATE_PLAY 2000 file:///b.srf",
                            "2 is PLAY_STATE_PLAY 2000 file:///b.srf",
                        }));
    EXPECT_EQ(player.uri(first), "");
    EXPECT_EQ(player.uri(second), "file:///b.srf");
}

TEST_F(PlayerTest, StartsAnewOnAHandleThatPlays)
{
    const int handle = play(30);
    EXPECT_TRUE(player.start(handle, "file:///b.srf", 0).is_done());
    EXPECT_EQ(player.uri(handle), "file:///b.srf");
    EXPECT_EQ(events().back(), "1 is PLAY_STATE_PLAY 0 file:///b.srf");
}

TEST_F(PlayerTest, EndsAtTheEndAndKeepsTheHandle)
{
    const int handle = play(95);
    player.forward(handle, 1);
    events();
    EXPECT_EQ(player.due(), now + 2500ms);
    pass(2499ms);
    EXPECT_EQ(events(), Lines());
    pass(2ms);
    EXPECT_EQ(events(), (Lines{
                            "1 at its end PLAY_STATE_FF_1 100000 /a.srf",
                            "1 is PLAY_STATE_STOP 100000 /a.srf",
                            "1 is over PLAY_STATE_STOP 100000 /a.srf",
                            "idle",
                        }));
    EXPECT_EQ(player.due(), std::nullopt);
    EXPECT_TRUE(player.start(handle, "/a.srf", 0).is_done());
}

TEST_F(PlayerTest, EndsAtOnceWhenStartedBehindTheEnd)
{
    const int handle = player.get_handle();
    EXPECT_TRUE(player.start(handle, "/a.srf", 2147483647).is_done());
    EXPECT_EQ(events().back(), "1 is PLAY_STATE_PLAY 100000 /a.srf");
    player.advance();
    EXPECT_EQ(events().front(), "1 at its end PLAY_STATE_PLAY 100000 /a.srf");
}

TEST_F(PlayerTest, PlaysOnFromTheBeginningAfterRewinding)
{
    const int handle = play(8);
    player.rewind(handle, 2);
    events();
    EXPECT_EQ(player.due(), now + 2s);
    pass(5s); // noticed late: it plays since it arrived
    EXPECT_EQ(events(), (Lines{
                            "1 at its beginning PLAY_STATE_PLAY 3000 /a.srf",
                            "1 is PLAY_STATE_PLAY 3000 /a.srf",
                        }));
    EXPECT_EQ(player.due(), now + 97s);
}

TEST_F(PlayerTest, MeetsBeginningAndEndWhenTheClockLeaps)
{
    const int handle = play(8);
    player.rewind(handle, 7);
    events();
    pass(24h);
    const Lines lines = events();
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[0].substr(0, 18), "1 at its beginning");
    EXPECT_EQ(lines[2].substr(0, 12), "1 at its end");
    EXPECT_EQ(lines[5], "idle");
}

TEST_F(PlayerTest, NoticesTheEndBeforeACommandThatComesTooLate)
{
    const int handle = play(99);
    now += 2s;
    expect_refusal(player.pause(handle), "nothing plays on this handle");
    const Lines lines = events();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0], "1 at its end PLAY_STATE_PLAY 100000 /a.srf");
    EXPECT_EQ(lines[4], "1 PS_PLAY_PAUSE -2 PLAY_STATE_NONE 0 ");
}

TEST_F(PlayerTest, LeavesWhatPlaysAloneWhenAnotherCannotStart)
{
    const int handle = play(30);
    expect_refusal(player.start(handle, "/gone.srf", 0), "gone");
    EXPECT_EQ(events(), (Lines{
                            "1 PS_PLAY_START 2 PLAY_STATE_PLAY 30000 /a.srf",
                            "1 failed with 2 PLAY_STATE_PLAY 0 /gone.srf",
                        }));
    EXPECT_EQ(player.uri(handle), "/a.srf");
}

TEST_F(PlayerTest, RefusesWhatCannotBeDone)
{
    const int playing = play(30);
    const int idle = player.get_handle();
    constexpr int unknown = 77;
    const std::string no_handle = "no such handle";
    const std::string idle_handle = "nothing plays on this handle";
    const struct {
        Outcome outcome;
        std::string reason;
        std::string answer; ///< told to the observer
    } refusals[] = {
        {player.start(unknown, "/a.srf", 0), no_handle, "77 PS_PLAY_START -2 PLAY_STATE_NONE 0 "},
        {player.start(idle, "/a.srf", -1), "a start before the beginning", "2 PS_PLAY_START -2 PLAY_STATE_NONE 0 "},
        {player.pause(unknown), no_handle, "77 PS_PLAY_PAUSE -2 PLAY_STATE_NONE 0 "},
        {player.pause(idle), idle_handle, "2 PS_PLAY_PAUSE -2 PLAY_STATE_NONE 0 "},
        {player.resume(idle), idle_handle, "2 PS_PLAY_RESUME -2 PLAY_STATE_NONE 0 "},
        {player.step_frame(idle), idle_handle, "2 PS_STEP_FRAME -2 PLAY_STATE_NONE 0 "},
        {player.forward(idle, 1), idle_handle, "2 PS_PLAY_FORWARD -2 PLAY_STATE_NONE 0 "},
        {player.forward(playing, 11), "no such speed", "1 PS_PLAY_FORWARD -2 PLAY_STATE_PLAY 30000 /a.srf"},
        {player.rewind(playing, 0), "no such speed", "1 PS_PLAY_REWIND -2 PLAY_STATE_PLAY 30000 /a.srf"},
        {player.skip(playing, 4, 0, 0), "no such kind of skip", "1 PS_PLAY_SKIP -2 PLAY_STATE_PLAY 30000 /a.srf"},
        {player.skip(playing, -1, 0, 0), "no such kind of skip", "1 PS_PLAY_SKIP -2 PLAY_STATE_PLAY 30000 /a.srf"},
        {player.stop(idle), idle_handle, "2 PS_PLAY_STOP -2 PLAY_STATE_NONE 0 "},
        {player.stop(unknown), no_handle, "77 PS_PLAY_STOP -2 PLAY_STATE_NONE 0 "},
    };
    const Lines lines = events();
    ASSERT_EQ(lines.size(), std::size(refusals));
    for (std::size_t i = 0; i < lines.size(); ++i) {
        expect_refusal(refusals[i].outcome, refusals[i].reason);
        EXPECT_EQ(lines[i], refusals[i].answer);
    }
}

TEST_F(PlayerTest, GoesOnWithWhatIsStillBeingWritten)
{
    growing["/a.srf"] = {100s};
    const int handle = play(100);
    EXPECT_EQ(player.due(), std::nullopt) << "it never gets to an end that moves as fast";
    growing["/a.srf"] = {160s};
    pass(60s);
    EXPECT_EQ(player.progress(handle)->relative_second, 160);
    EXPECT_EQ(player.progress(handle)->absolute_second, 5000 + 60);
    EXPECT_EQ(events(), Lines());
}

TEST_F(PlayerTest, PlaysOnFromTheEndOfWhatIsBeingWritten)
{
    growing["/a.srf"] = {100s};
    const int handle = play(60);
    player.forward(handle, 1);
    EXPECT_EQ(player.due(), now + 20s);
    events();
    growing["/a.srf"] = {130s};
    pass(20s);
    EXPECT_EQ(events(), Lines()) << "it has grown meanwhile";
    EXPECT_EQ(player.due(), now + 15s);
    pass(15s);
    EXPECT_EQ(events(), (Lines{"1 is PLAY_STATE_PLAY 130000 /a.srf"}));
    EXPECT_EQ(player.due(), std::nullopt);
}

TEST_F(PlayerTest, EndsWithWhatIsNoLongerWritten)
{
    growing["/a.srf"] = {100s};
    play(90);
    growing.clear();
    player.advance();
    EXPECT_EQ(player.due(), now + 10s);
    pass(10s);
    EXPECT_EQ(events().front(), "1 at its end PLAY_STATE_PLAY 100000 /a.srf");
}

TEST_F(PlayerTest, StopsWithTheFileThatItPlays)
{
    play(30);
    player.stop_path("/b.srf");
    EXPECT_TRUE(player.plays_from("/a.srf"));
    player.stop_path("/a.srf");
    EXPECT_FALSE(player.is_playing());
}

TEST_F(PlayerTest, StandsAtABeginningThatMovesPastWhereItIsPaused)
{
    growing["/a.srf"] = {100s, 0s};
    const int handle = play(30);
    player.pause(handle);
    events();
    const std::int64_t second = player.progress(handle)->absolute_second;
    growing["/a.srf"] = {100s, 30s};
    pass(30s);
    EXPECT_EQ(player.progress(handle)->relative_second, 0);
    EXPECT_EQ(player.progress(handle)->absolute_second, second) << "just not lost";
    growing["/a.srf"] = {100s, 45s};
    pass(15s);
    EXPECT_EQ(player.progress(handle)->relative_second, 0);
    EXPECT_EQ(player.progress(handle)->absolute_second, second + 15);
    EXPECT_EQ(player.state(), PLAY_STATE_PAUSE);
    EXPECT_EQ(events(), Lines());
    player.resume(handle);
    growing["/a.srf"] = {100s, 55s};
    pass(10s);
    EXPECT_EQ(player.progress(handle)->relative_second, 0) << "it plays, as fast as the beginning moves";
}

TEST_F(PlayerTest, RewindsNoFurtherThanToABeginningThatMoves)
{
    growing["/a.srf"] = {100s, 0s};
    const int handle = play(30);
    player.rewind(handle, 1);
    events();
    growing["/a.srf"] = {100s, 9s};
    pass(9s);
    EXPECT_EQ(player.progress(handle)->relative_second, 3);
    EXPECT_EQ(events(), Lines());
    growing["/a.srf"] = {100s, 10s};
    pass(1s);
    EXPECT_EQ(events(), (Lines{"1 at its beginning PLAY_STATE_PLAY 0 /a.srf", "1 is PLAY_STATE_PLAY 0 /a.srf"}));
}

TEST_F(PlayerTest, KeepsUpWithTheEndOfWhatLosesItsBeginning)
{
    growing["/a.srf"] = {100s, 0s};
    const int handle = play(100);
    const std::int64_t second = player.progress(handle)->absolute_second;
    for (int step = 1; step <= 5; ++step) {
        growing["/a.srf"] = {100s, step * 10s};
        pass(10s);
    }
    EXPECT_EQ(player.progress(handle)->relative_second, 100);
    EXPECT_EQ(player.progress(handle)->absolute_second, second + 50);
    EXPECT_EQ(events(), Lines());
}
