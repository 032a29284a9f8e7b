// The control interface on a real bus: what the service was asked, faults, signals of any kind, absence.
#include "bus/main_context.h"
#include "peer.h"
#include "support/private_bus.h"
#include "support/temporary_folder.h"
#include "test_programme.h"

#include <gtest/gtest.h>
#include <regex>

using namespace simulator_test;

namespace {

constexpr char service_name[] = "org.vexan.tv.pvr.server";

class Control : public testing::Test {
protected:
    /// The calls after a number, without their times and callers.
    std::string calls(int after = 0)
    {
        const std::regex times(R"((\d+), \d+, \d+, ':[0-9.]+', )");
        const std::string list = peer.control("ListCalls", "(uint64 " + std::to_string(after) + ",)");
        return std::regex_replace(list, times, "$1, ");
    }
    bool is_there() { return peer.has_owner(service_name); }

    Simulator simulator;
    Peer peer;
};

} // namespace

TEST_F(Control, ListsTheCallsWithTheirArguments)
{
    EXPECT_EQ(calls(), "([],)");
    peer.call("get_handle");
    peer.call("play_start", "(1, '/a.srf', -3)");
    peer.call("set_share_data", "(1, uint64 18446744073709551615)");
    EXPECT_EQ(calls(), "([(1, 'get_handle', []), (2, 'play_start', [<1>, <'/a.srf'>, <-3>]), "
                       "(3, 'set_share_data', [<1>, <uint64 18446744073709551615>])],)");
    EXPECT_EQ(calls(2), "([(3, 'set_share_data', [<1>, <uint64 18446744073709551615>])],)");
    EXPECT_EQ(peer.control("ClearCalls"), "()");
    EXPECT_EQ(calls(), "([],)");
    peer.call("get_handle");
    EXPECT_EQ(calls(), "([(4, 'get_handle', [])],)");
}

TEST_F(Control, TellsWhoCalledAndWhen)
{
    peer.call("get_handle");
    peer.call("get_handle");
    const std::string list = peer.control("ListCalls", "(uint64 0,)");
    const std::regex form(R"(\(\[\(1, (\d+), (\d+), '(:[0-9.]+)', .*\(2, (\d+), (\d+), '(:[0-9.]+)', .*)");
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(list, parts, form)) << list;
    EXPECT_EQ(parts[3], parts[6]);
    EXPECT_LE(std::stoll(parts[1]), std::stoll(parts[4]));
    EXPECT_LE(std::stoll(parts[4]), g_get_monotonic_time());
    EXPECT_LE(std::stoll(parts[5]), g_get_real_time());
}

TEST_F(Control, EmitsAnySignal)
{
    EXPECT_EQ(peer.control("EmitSignal", "('result_to_apps', [<8>, <<(1, 0, 2, uint64 3, 4, 5)>>])"), "()");
    EXPECT_EQ(peer.control("EmitSignal", "('result_to_apps', @av [])"), "()");
    EXPECT_EQ(peer.control("EmitSignal", "('something_else', [<'text'>, <{'a': 1}>])"), "()");
    EXPECT_EQ(peer.signals_until("something_else"), (Lines{
                                                        "result_to_apps (8, <(1, 0, 2, uint64 3, 4, 5)>)",
                                                        "result_to_apps ()",
                                                        "something_else ('text', {'a': 1})",
                                                    }));
}

TEST_F(Control, HasCallsFailAsOftenAsItIsTold)
{
    EXPECT_EQ(peer.control("FailMethod", "('get_handle', 'org.example.Broken', 'as asked', uint32 2)"), "()");
    EXPECT_EQ(peer.call("get_handle"), "org.example.Broken: as asked");
    EXPECT_EQ(peer.call("is_support_pvr"), "(1,)");
    EXPECT_EQ(peer.call("get_handle"), "org.example.Broken: as asked");
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
}

TEST_F(Control, HasCallsFailUntilFaultsAreCleared)
{
    peer.control("FailMethod", "('get_handle', 'org.example.Broken', '', uint32 0)");
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(peer.call("get_handle"), "org.example.Broken: ");
    EXPECT_EQ(peer.control("ClearFaults"), "()");
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
}

TEST_F(Control, HoldsCallsBackWhileOthersPass)
{
    peer.control("DelayMethod", "('get_handle', uint32 3600000, uint32 1)");
    peer.send("get_handle", "()", [](const std::string &) {});
    EXPECT_EQ(peer.call("get_handle_for_playback"), "(1, 0)");
    EXPECT_EQ(peer.call("get_handle"), "(2, 0)") << "only one was to wait";
    EXPECT_EQ(calls(), "([(1, 'get_handle', []), (2, 'get_handle_for_playback', []), (3, 'get_handle', [])],)");
}

TEST_F(Control, CarriesACallOutWhenItHasWaited)
{
    peer.control("DelayMethod", "('get_handle', uint32 20, uint32 0)");
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
    EXPECT_EQ(peer.call("get_handle"), "(2, 0)");
    const Lines log = simulator.log();
    EXPECT_EQ(Lines(log.begin() + 1, log.end()),
              (Lines{"get_handle()  held back for 20 ms", "get_handle()  handle 1, ok",
                     "get_handle()  held back for 20 ms", "get_handle()  handle 2, ok"}));
}

TEST_F(Control, KeepsTheOrderOfCallsThatWaitEquallyLong)
{
    peer.control("DelayMethod", "('get_handle', uint32 50, uint32 0)");
    std::string answers;
    for (int i = 0; i < 20; ++i)
        peer.send("get_handle", "()", [&](const std::string &answer) { answers += answer; });
    std::string expected;
    for (int handle = 1; handle <= 20; ++handle)
        expected += "(" + std::to_string(handle) + ", 0)";
    support::run_until(nullptr, [&] { return answers.size() >= expected.size(); });
    EXPECT_EQ(answers, expected);
}

TEST_F(Control, HasACallWaitAndThenFail)
{
    peer.control("DelayMethod", "('get_handle', uint32 20, uint32 1)");
    peer.control("FailMethod", "('get_handle', 'org.example.Broken', 'late', uint32 1)");
    EXPECT_EQ(peer.call("get_handle"), "org.example.Broken: late");
    const Lines log = simulator.log();
    ASSERT_GE(log.size(), 2U);
    EXPECT_EQ(log[log.size() - 2], "get_handle()  held back for 20 ms");
    EXPECT_EQ(log.back(), "get_handle()  fails as asked: org.example.Broken");
}

TEST_F(Control, RefusesArgumentsThatMakeNoSense)
{
    const struct {
        std::string method;
        std::string arguments;
        std::string message;
    } refusals[] = {
        {"DelayMethod", "('no_method', uint32 1, uint32 1)", "InvalidArgs: org.vexan.tv.pvr has no method 'no_method'"},
        {"FailMethod", "('', 'org.example.Broken', '', uint32 1)", "InvalidArgs: org.vexan.tv.pvr has no method ''"},
        {"FailMethod", "('format', 'no name', '', uint32 1)", "InvalidArgs: 'no name' cannot be the name of an error"},
        {"EmitSignal", "('no name', @av [])", "InvalidArgs: 'no name' cannot be the name of a signal"},
        {"EmitSignal", "('', @av [])", "InvalidArgs: '' cannot be the name of a signal"},
        {"Vanish", "('text',)", "InvalidArgs: Type of message, “(s)”, does not match expected type “(u)”"},
    };
    for (const auto &[method, arguments, message] : refusals)
        EXPECT_EQ(peer.control(method, arguments), "org.freedesktop.DBus.Error." + message);
    EXPECT_EQ(peer.control("NoMethod").substr(0, 41), "org.freedesktop.DBus.Error.UnknownMethod:");
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
}

TEST_F(Control, HasTheServiceVanishUntilItIsToldToReturn)
{
    peer.call("get_handle");
    EXPECT_EQ(peer.control("Vanish", "(uint32 0,)"), "()");
    EXPECT_FALSE(is_there());
    EXPECT_EQ(peer.call("get_handle").substr(0, 42), "org.freedesktop.DBus.Error.ServiceUnknown:");
    EXPECT_EQ(peer.control("EmitSignal", "('any', @av [])"), "org.freedesktop.DBus.Error.Failed: the service is away");
    EXPECT_EQ(peer.control("Return"), "()");
    EXPECT_TRUE(is_there());
    EXPECT_EQ(peer.control("Return"), "()") << "it is there already";
    EXPECT_EQ(peer.call("get_handle"), "(2, 0)") << "it remembers";
}

TEST_F(Control, HasTheServiceReturnByItself)
{
    EXPECT_EQ(peer.control("Vanish", "(uint32 3600000,)"), "()");
    EXPECT_FALSE(is_there());
    EXPECT_EQ(peer.control("Vanish", "(uint32 1,)"), "()") << "away already: only the return is set anew";
    support::run_until(nullptr, [&] { return is_there(); });
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)");
}

TEST_F(Control, LeavesCallsUnderWayWithoutAnAnswerWhenTheServiceVanishes)
{
    peer.control("DelayMethod", "('get_handle', uint32 3600000, uint32 0)");
    std::string held;
    peer.send("get_handle", "()", [&](std::string answer) { held = std::move(answer); });
    peer.call("is_support_pvr"); // the held one has arrived before
    peer.control("Vanish", "(uint32 0,)");
    support::run_until(nullptr, [&] { return !held.empty(); });
    EXPECT_EQ(held.substr(0, 35), "org.freedesktop.DBus.Error.NoReply:");
    EXPECT_EQ(peer.control("Return"), "()");
    peer.control("ClearFaults");
    EXPECT_EQ(peer.call("get_handle"), "(1, 0)") << "the held one was never carried out";
}

TEST_F(Control, LetsAPlaybackGoOnWhileTheServiceIsAway)
{
    const support::TemporaryFolder folder;
    simulator::write_test_programme(folder / "a.srf", 60);
    peer.call("get_handle");
    EXPECT_EQ(peer.call("play_start", "(1, '" + (folder / "a.srf") + "', 10)"), "(0,)");
    EXPECT_EQ(peer.call("play_forward", "(1, 7)"), "(0,)");
    peer.signals_until("PS_SIGNAL_TYPE_PLAY_STATE_CHANGE of 1: PLAY_STATE_FF_7");
    peer.control("Vanish", "(uint32 600,)"); // it ends meanwhile: 50 s at 128 times
    support::run_until(nullptr, [&] { return is_there(); });
    EXPECT_EQ(peer.call("get_pvr_state"), "(0, 0)");
    EXPECT_EQ(peer.signals(), Lines()) << "nobody heard of the end";
}

TEST_F(Control, SaysThatTheServiceCannotReturnWhileItsNameIsTaken)
{
    peer.control("Vanish", "(uint32 0,)");
    {
        Peer other;
        other.own("org.vexan.tv.pvr.server");
        EXPECT_EQ(peer.control("Return"), "org.freedesktop.DBus.Error.Failed: cannot own org.vexan.tv.pvr.server: "
                                          "another service on this bus owns it");
    }
    EXPECT_EQ(peer.control("Return"), "()");
    EXPECT_TRUE(is_there());
}
