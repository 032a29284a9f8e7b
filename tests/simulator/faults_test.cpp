// Faults without a bus: when one strikes, in which order, by which chance, and which requests are refused.
#include "faults.h"

#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

using namespace simulator;

namespace {

/// Options from GVariant text.
GVariant *options(const std::string &text)
{
    return g_variant_parse(G_VARIANT_TYPE_VARDICT, text.c_str(), nullptr, nullptr, nullptr);
}

FaultPlan plan(const std::string &kind, const std::string &target, const std::string &given = "{}")
{
    return planned_fault(kind, target, options(given), {"usb1", "usb2"});
}

/// Why a request is refused; nothing when it is not.
std::string refusal(const std::string &kind, const std::string &target, GVariant *given)
{
    try {
        planned_fault(kind, target, given, {"usb1", "usb2"});
    } catch (const std::invalid_argument &error) {
        return error.what();
    }
    return "";
}

class FaultsTest : public testing::Test {
protected:
    /// The kind that strikes a call of get_handle when it is to be carried out.
    std::string struck()
    {
        const FaultPlan *fault = faults.take(Occasion::answer, "get_handle");
        return fault != nullptr ? name_of(fault->kind) : "";
    }
    bool is_sent_twice(int code) { return faults.take(Occasion::sending, "result_to_apps", code) != nullptr; }
    /// Which of so many calls are struck.
    static std::string strikes(const std::string &given, int calls)
    {
        Faults faults;
        faults.add(plan("no-answer", "get_handle", given));
        std::string marks;
        for (int i = 0; i < calls; ++i)
            marks += faults.take(Occasion::answer, "get_handle") != nullptr ? '!' : '.';
        return marks;
    }

    Faults faults;
};

} // namespace

TEST_F(FaultsTest, StrikesAsOftenAsItIsTold)
{
    EXPECT_EQ(strikes("{'times': <uint32 1>}", 4), "!...");
    EXPECT_EQ(strikes("{'times': <uint32 3>}", 4), "!!!.");
    EXPECT_EQ(strikes("{'times': <uint32 0>}", 4), "!!!!");
    EXPECT_EQ(strikes("{}", 4), "!!!!");
}

TEST_F(FaultsTest, FollowsTheSameSeedInTheSameWay)
{
    const std::string seven = strikes("{'probability': <0.5>, 'seed': <uint64 7>}", 64);
    EXPECT_EQ(seven, strikes("{'probability': <0.5>, 'seed': <uint64 7>}", 64));
    EXPECT_NE(seven, strikes("{'probability': <0.5>, 'seed': <uint64 8>}", 64));
    EXPECT_EQ(strikes("{'probability': <0.5>}", 64), strikes("{'probability': <0.5>, 'seed': <uint64 0>}", 64));
}

TEST_F(FaultsTest, HasTheSameSequenceOnEverySystem)
{
    EXPECT_EQ(strikes("{'probability': <0.5>, 'seed': <uint64 7>}", 16), "..!.!!..!...!!.!");
}

TEST_F(FaultsTest, StrikesNeverAndAlwaysAtTheEndsOfChance)
{
    EXPECT_EQ(strikes("{'probability': <0.0>, 'seed': <uint64 3>}", 200), std::string(200, '.'));
    EXPECT_EQ(strikes("{'probability': <1.0>, 'seed': <uint64 3>}", 200), std::string(200, '!'));
}

TEST_F(FaultsTest, StrikesByChanceUpToItsNumberOfTimes)
{
    const std::string free = strikes("{'probability': <0.5>, 'seed': <uint64 7>}", 64);
    std::string limited = strikes("{'probability': <0.5>, 'seed': <uint64 7>, 'times': <uint32 2>}", 64);
    const std::size_t second = free.find('!', free.find('!') + 1);
    EXPECT_EQ(limited, free.substr(0, second + 1) + std::string(63 - second, '.'));
}

TEST_F(FaultsTest, StrikesWithTheFirstThatDoes)
{
    faults.add(plan("wrong-type", "get_handle", "{'times': <uint32 1>}"));
    faults.add(plan("no-answer", "get_handle", "{'times': <uint32 1>}"));
    faults.add(plan("no-answer", "play_start"));
    EXPECT_EQ(struck(), "wrong-type");
    EXPECT_EQ(struck(), "no-answer");
    EXPECT_EQ(struck(), "");
}

TEST_F(FaultsTest, CountsTheOccasionsAndHowOftenItStruck)
{
    faults.add(plan("wrong-type", "get_handle", "{'times': <uint32 2>}"));
    faults.add(plan("no-answer", "get_handle", "{'probability': <0.0>}"));
    for (int i = 0; i < 5; ++i)
        struck();
    EXPECT_EQ(faults.list().front().met, 2U);
    EXPECT_EQ(faults.list().front().fired, 2U);
    EXPECT_EQ(faults.list().back().met, 3U) << "it did not meet what another struck";
    EXPECT_EQ(faults.list().back().fired, 0U);
}

TEST_F(FaultsTest, TellsOccasionsApart)
{
    faults.add(plan("delay", "get_handle", "{'milliseconds': <uint32 5>}"));
    EXPECT_EQ(struck(), "");
    ASSERT_NE(faults.take(Occasion::arrival, "get_handle"), nullptr);
    EXPECT_EQ(faults.take(Occasion::arrival, "get_handle")->options.milliseconds, 5U);
    EXPECT_EQ(faults.take(Occasion::arrival, "play_start"), nullptr);
}

TEST_F(FaultsTest, MeetsSignalsByTheirCode)
{
    faults.add(plan("drop", "result_to_apps", "{'code': <8>, 'times': <uint32 1>}"));
    EXPECT_FALSE(is_sent_twice(9));
    EXPECT_TRUE(is_sent_twice(8));
    EXPECT_FALSE(is_sent_twice(8));
    faults.add(plan("drop", "result_to_apps"));
    EXPECT_TRUE(is_sent_twice(9));
}

TEST_F(FaultsTest, RemovesThoseOfAKindForATarget)
{
    faults.add(plan("no-answer", "get_handle"));
    faults.add(plan("wrong-type", "get_handle"));
    faults.add(plan("no-answer", "play_start"));
    faults.remove(FaultKind::no_answer, "get_handle");
    EXPECT_EQ(struck(), "wrong-type");
    EXPECT_EQ(faults.list().size(), 2U);
}

TEST_F(FaultsTest, RemovesOneAndAll)
{
    const std::uint32_t first = faults.add(plan("no-answer", "get_handle"));
    faults.add(plan("wrong-type", "get_handle"));
    EXPECT_TRUE(faults.remove(first));
    EXPECT_FALSE(faults.remove(first));
    EXPECT_EQ(struck(), "wrong-type");
    faults.clear();
    EXPECT_EQ(struck(), "");
    EXPECT_EQ(faults.add(plan("no-answer", "get_handle")), 3U) << "numbers never start again";
}

TEST_F(FaultsTest, TakesNoMoreThanItsLimit)
{
    for (std::size_t i = 0; i < Faults::most; ++i)
        faults.add(plan("no-answer", "get_handle"));
    EXPECT_THROW(faults.add(plan("no-answer", "get_handle")), std::length_error);
    faults.remove(1);
    EXPECT_EQ(faults.add(plan("no-answer", "get_handle")), Faults::most + 1);
}

TEST_F(FaultsTest, KnowsAFullDeviceWithoutAWrite)
{
    faults.add(plan("device-full", "usb1", "{'times': <uint32 1>}"));
    EXPECT_TRUE(faults.is_full("usb1"));
    EXPECT_TRUE(faults.is_full("usb1")) << "asking is no write";
    EXPECT_FALSE(faults.is_full("usb2"));
    EXPECT_NE(faults.take(Occasion::writing, "usb1"), nullptr);
    EXPECT_FALSE(faults.is_full("usb1"));
    faults.add(plan("device-full", "usb2", "{'probability': <1.0>}"));
    EXPECT_FALSE(faults.is_full("usb2")) << "it is left to chance";
}

TEST_F(FaultsTest, KeepsADeviceOutForSoManyCalls)
{
    faults.add(plan("device-pulled", "usb1", "{'times': <uint32 2>}"));
    EXPECT_TRUE(faults.is_pulled("usb1")) << "at once";
    EXPECT_FALSE(faults.is_pulled("usb2"));
    for (const bool is_out : {true, true, false, false}) {
        faults.call_passes();
        EXPECT_EQ(faults.is_pulled("usb1"), is_out);
    }
}

TEST_F(FaultsTest, LeavesItToChanceWhichCallsFindADevice)
{
    const auto finds = [](const std::string &given) {
        Faults faults;
        faults.add(plan("device-pulled", "usb1", given));
        std::string marks = faults.is_pulled("usb1") ? "out:" : "there:";
        for (int i = 0; i < 16; ++i) {
            faults.call_passes();
            marks += faults.is_pulled("usb1") ? '!' : '.';
        }
        return marks;
    };
    EXPECT_EQ(finds("{'probability': <0.5>, 'seed': <uint64 7>}"),
              "there:" + strikes("{'probability': <0.5>, 'seed': <uint64 7>}", 16));
    EXPECT_EQ(finds("{'probability': <1.0>}"), "there:!!!!!!!!!!!!!!!!");
}

TEST(FaultRequest, TellsWhatIsExpected)
{
    const struct {
        const char *kind;
        const char *target;
        const char *options;
        const char *message;
    } refusals[] = {
        {"wobble", "get_handle", "{}",
         "there is no fault 'wobble', but delay, no-answer, error, result, wrong-type, crash, hold, drop, duplicate, "
         "short-record, no-digits, wrong-variant, device-full and device-pulled"},
        {"", "", "{}",
         "there is no fault '', but delay, no-answer, error, result, wrong-type, crash, hold, drop, duplicate, "
         "short-record, no-digits, wrong-variant, device-full and device-pulled"},
        {"crash", "no_method", "{}", "org.vexan.tv.pvr has no method 'no_method'"},
        {"crash", "result_to_apps", "{}", "org.vexan.tv.pvr has no method 'result_to_apps'"},
        {"drop", "get_handle", "{}",
         "org.vexan.tv.pvr has no signal 'get_handle', but result_to_apps and send_pvr_signal_to_apps"},
        {"short-record", "result_to_apps", "{}",
         "the fault 'short-record' is one of send_pvr_signal_to_apps, not of result_to_apps"},
        {"no-digits", "result_to_apps", "{}",
         "the fault 'no-digits' is one of send_pvr_signal_to_apps, not of result_to_apps"},
        {"wrong-variant", "send_pvr_signal_to_apps", "{}",
         "the fault 'wrong-variant' is one of result_to_apps, not of send_pvr_signal_to_apps"},
        {"device-full", "usb3", "{}", "there is no device 'usb3', but usb1 and usb2"},
        {"result", "record_start", "{'result': <1>}", "the method 'record_start' answers no result"},
        {"result", "get_pvr_state", "{'result': <1>}", "the method 'get_pvr_state' answers no result"},
        {"result", "get_handle", "{}", "the fault 'result' needs the option 'result'"},
        {"delay", "get_handle", "{}", "the fault 'delay' needs the option 'milliseconds'"},
        {"error", "get_handle", "{'message': <'text'>}", "the fault 'error' needs the option 'error'"},
        {"error", "get_handle", "{'error': <'no name'>}", "'no name' cannot be the name of an error"},
        {"crash", "get_handle", "{'milliseconds': <uint32 1>}",
         "the fault 'crash' has no option 'milliseconds', but times, probability and seed"},
        {"drop", "result_to_apps", "{'wobble': <1>}",
         "the fault 'drop' has no option 'wobble', but code, times, probability and seed"},
        {"delay", "get_handle", "{'milliseconds': <1>}", "the option 'milliseconds' is of type u, not i"},
        {"crash", "get_handle", "{'times': <'1'>}", "the option 'times' is of type u, not s"},
        {"crash", "get_handle", "{'probability': <1.5>}", "the option 'probability' is from 0 to 1"},
        {"crash", "get_handle", "{'probability': <-0.5>}", "the option 'probability' is from 0 to 1"},
        {"crash", "get_handle", "{'seed': <uint64 1>}", "the option 'seed' goes with a 'probability'"},
    };
    for (const auto &[kind, target, given, message] : refusals)
        EXPECT_EQ(refusal(kind, target, options(given)), message);

    GVariantDict no_number;
    g_variant_dict_init(&no_number, nullptr);
    g_variant_dict_insert(&no_number, "probability", "d", std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(refusal("crash", "get_handle", g_variant_dict_end(&no_number)),
              "the option 'probability' is from 0 to 1");
}

TEST(FaultRequest, TellsThatThereIsNoDevice)
{
    try {
        planned_fault("device-pulled", "usb1", options("{}"), {});
        FAIL() << "it is taken";
    } catch (const std::invalid_argument &error) {
        EXPECT_STREQ(error.what(), "there is no device 'usb1', nor any other");
    }
}
