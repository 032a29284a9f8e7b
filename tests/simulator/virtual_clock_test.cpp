// The set's time, with a machine whose clocks the test moves.
#include "virtual_clock.h"

#include <gtest/gtest.h>

using namespace simulator;
using namespace std::chrono_literals;

namespace {

class VirtualClockTest : public testing::Test {
protected:
    VirtualClock clock(double speed)
    {
        return VirtualClock(speed, [this] { return machine; });
    }
    void pass(Microseconds time)
    {
        machine.monotonic += time;
        machine.wall += time;
    }

    VirtualClock::Real machine{1000s, 1'700'000'000s};
};

} // namespace

TEST_F(VirtualClockTest, BeginsWithTheMachinesTime)
{
    VirtualClock clock = this->clock(60);
    EXPECT_EQ(clock.now(), 1000s);
    EXPECT_EQ(clock.target(), 1000s);
    EXPECT_EQ(clock.wall(), 1'700'000'000s);
    EXPECT_EQ(clock.wall_seconds(), 1'700'000'000);
}

TEST_F(VirtualClockTest, PassesAsFastAsItIsTold)
{
    for (const auto &[speed, second] : {std::pair(1.0, 1s), std::pair(60.0, 60s), std::pair(3600.0, 3600s)}) {
        machine = {1000s, 1'700'000'000s};
        VirtualClock clock = this->clock(speed);
        pass(1s);
        EXPECT_EQ(clock.now(), 1000s) << "it stands still until it is moved";
        EXPECT_EQ(clock.target(), 1000s + second);
        clock.go_to(clock.target());
        EXPECT_EQ(clock.now(), 1000s + second);
        EXPECT_EQ(clock.wall(), 1'700'000'000s + second);
    }
    VirtualClock slow = this->clock(0.5);
    pass(1s);
    EXPECT_EQ(slow.target() - slow.now(), 500ms);
}

TEST_F(VirtualClockTest, NeverGoesBack)
{
    VirtualClock clock = this->clock(1);
    clock.go_to(2000s);
    clock.go_to(1500s);
    EXPECT_EQ(clock.now(), 2000s);
    EXPECT_EQ(clock.target(), 2000s);
}

TEST_F(VirtualClockTest, JumpsAndGoesOnFromThere)
{
    VirtualClock clock = this->clock(10);
    pass(2s);
    clock.skip(3600s);
    EXPECT_EQ(clock.target(), 1000s + 20s + 3600s);
    clock.go_to(clock.target());
    EXPECT_EQ(clock.wall(), 1'700'000'000s + 20s + 3600s);
    pass(1s);
    EXPECT_EQ(clock.target() - clock.now(), 10s);
}

TEST_F(VirtualClockTest, TellsWhenAMomentComes)
{
    for (const double speed : {0.5, 1.0, 7.0, 60.0, 3600.0}) {
        VirtualClock clock = this->clock(speed);
        clock.skip(100s);
        const Microseconds moment = clock.now() + 7777s;
        const Microseconds real = clock.real_moment(moment);
        pass(real - machine.monotonic - 2us);
        EXPECT_LT(clock.target(), moment) << speed;
        pass(2us);
        EXPECT_GE(clock.target(), moment) << speed;
    }
}

TEST_F(VirtualClockTest, FollowsWhoeverSetsTheMachinesClock)
{
    VirtualClock clock = this->clock(60);
    machine.wall += 3h;
    clock.go_to(clock.target());
    EXPECT_EQ(clock.wall(), 1'700'000'000s + 3h);
    EXPECT_EQ(clock.now(), 1000s) << "nothing becomes due by that";
    machine.wall -= 5h;
    clock.target();
    EXPECT_EQ(clock.wall(), 1'700'000'000s - 2h);
    machine.wall += 900ms;
    clock.target();
    EXPECT_EQ(clock.wall(), 1'700'000'000s - 2h) << "as a clock that is being disciplined does";
}

TEST_F(VirtualClockTest, ForgetsWhatCannotBeMadeUpFor)
{
    VirtualClock clock = this->clock(60);
    pass(10s);
    EXPECT_EQ(clock.target(), 1600s);
    clock.go_to(1100s);
    clock.forget_lag();
    EXPECT_EQ(clock.target(), 1100s);
    pass(1s);
    EXPECT_EQ(clock.target(), 1160s);
}

TEST_F(VirtualClockTest, HasWhatRecursWaitLongerTheFasterTimePasses)
{
    EXPECT_EQ(clock(0.1).stride(200ms), 200ms);
    EXPECT_EQ(clock(1).stride(200ms), 200ms);
    EXPECT_EQ(clock(10).stride(200ms), 2s);
    EXPECT_EQ(clock(3600).stride(200ms), VirtualClock::longest_stride);
    EXPECT_EQ(clock(1).stride(1h), 1h) << "never more often than usual";
    VirtualClock late = clock(1);
    late.skip(3s);
    late.target();
    EXPECT_EQ(late.stride(200ms), 3s) << "and when there is something to make up for";
    late.skip(1h);
    late.target();
    EXPECT_EQ(late.stride(200ms), VirtualClock::longest_stride);
    late.go_to(late.target());
    EXPECT_EQ(late.stride(200ms), 200ms);
}
