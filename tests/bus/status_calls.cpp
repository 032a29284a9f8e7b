#include "bus/remote_call.h"
#include "pvr_service_api.h"

#include <cinttypes>
#include <cstring>
#include <ostream>

using namespace support;
using Result = RemoteCall::Result;

namespace {

constexpr std::uint64_t beyond_63_bits = 0xfedcba9876543210;

std::ostream &operator<<(std::ostream &out, const channel_info &info)
{
    return out << info.major << "|" << info.minor << "|" << info.start_time << "|" << info.end_time << "|"
               << text_of(info.channel_name, sizeof info.channel_name) << "|"
               << text_of(info.program_title, sizeof info.program_title);
}

/// The lines of the first fields that could be read.
Lines channel_lines(std::size_t count, const std::string &name = "Eins", const std::string &title = "News ä")
{
    const Lines all{plain_info("major [5]"),
                    plain_info("minor [-1]"),
                    plain_info("start time [4294967295]"),
                    plain_info("end time [7]"),
                    plain_info("channel name [" + name + "]"),
                    plain_info("program title [" + title + "]")};
    return {all.begin(), all.begin() + static_cast<Lines::difference_type>(count)};
}

Outcome channel_outcome(const std::string &elements, const std::string &stored, Lines lines)
{
    return {"(@a(v) [" + elements + "], 0)", 0, stored, std::move(lines)};
}

const std::string long_name(300, 'c');

const RemoteCall get_channel_info{
    .name = "svc_pvr_get_channel_info",
    .call =
        [](std::ostream &outputs) {
            channel_info info{};
            const int returned = svc_pvr_get_channel_info(beyond_63_bits, &info);
            outputs << info;
            return returned;
        },
    .untouched = "0|0|0|0||",
    .entry = entry("[service_id:18364758544493064720]"),
    .is_checked = true,
    .request = request("get_channel_info", "t", "(uint64 18364758544493064720,)"),
    .result = Result::is_published,
    .outcomes =
        {
            channel_outcome("(<5>,), (<-1>,), (<uint32 4294967295>,), (<uint32 7>,), (<'Eins'>,), (<'News ä'>,)",
                            "5|-1|4294967295|7|Eins|News ä", channel_lines(6)),
            channel_outcome(
                "(<5>,), (<-1>,), (<uint32 4294967295>,), (<uint32 7>,), (<'Eins'>,), (<'News ä'>,), (<1>,)",
                "5|-1|4294967295|7|Eins|News ä", channel_lines(6)),
            channel_outcome("(<5>,), (<-1>,), (<uint32 4294967295>,), (<uint32 7>,), (<'" + long_name + "'>,), (<'" +
                                long_name + "'>,)",
                            "5|-1|4294967295|7|" + long_name.substr(0, 254) + "|" + long_name.substr(0, 254),
                            channel_lines(6, long_name, long_name)),
            channel_outcome("", "0|0|0|0||", {}),
            channel_outcome("(<5>,)", "5|0|0|0||", channel_lines(1)),
            channel_outcome("(<'5'>,), (<-1>,)", "0|0|0|0||", {}),
            channel_outcome("(<5>,), (<int64 1>,), (<uint32 1>,)", "5|0|0|0||", channel_lines(1)),
            channel_outcome("(<5>,), (<-1>,), (<4>,)", "5|-1|0|0||", channel_lines(2)),
            channel_outcome("(<5>,), (<-1>,), (<uint32 4294967295>,), (<byte 7>,)", "5|-1|4294967295|0||",
                            channel_lines(3)),
            channel_outcome("(<5>,), (<-1>,), (<uint32 4294967295>,), (<uint32 7>,), (<b'Eins'>,), (<'x'>,)",
                            "5|-1|4294967295|7||", channel_lines(4)),
            channel_outcome("(<5>,), (<-1>,), (<uint32 4294967295>,), (<uint32 7>,), (<'Eins'>,), (<<'x'>>,)",
                            "5|-1|4294967295|7|Eins|", channel_lines(5)),
        },
    .call_with_null_outputs = {}, // null is refused: see below
};

const RemoteCall set_share_data{
    .name = "svc_pvr_set_share_data",
    .call = [](std::ostream &) { return svc_pvr_set_share_data(3, -2); },
    .untouched = "",
    .entry = entry("[share_data_type:3][share_data_value:-2]"),
    .is_checked = true,
    .request = request("set_share_data", "it", "(3, uint64 18446744073709551614)"),
    .result = Result::is_published,
    .outcomes = {{"(1,)", 0, "", {info(" [g_result:1]")}},
                 {"(0,)", -2, "", {info(" [g_result:0]")}},
                 {"(2,)", -2, "", {info(" [g_result:2]")}},
                 {"(-1,)", -2, "", {info(" [g_result:-1]")}}},
    .call_with_null_outputs = {},
};

RemoteCall is_support_pvr(std::vector<Outcome> outcomes)
{
    return {
        .name = "svc_pvr_is_support_pvr",
        .call =
            [](std::ostream &outputs) {
                int supported = -77;
                const int returned = svc_pvr_is_support_pvr(&supported);
                outputs << supported;
                return returned;
            },
        .untouched = "-77",
        .entry = entry(""),
        .is_checked = false,
        .request = request("is_support_pvr", "", "()"),
        .result = Result::is_the_answer,
        .outcomes = std::move(outcomes),
        .call_with_null_outputs = [] { return svc_pvr_is_support_pvr(nullptr); },
    };
}

const Outcome refused{"(0,)", PS_FACTORY_ERROR, "0", {plain_entry("[PS_FACTORY_ERROR]")}};

const RemoteCall get_pvr_state{
    .name = "svc_pvr_get_pvr_state",
    .call =
        [](std::ostream &outputs) {
            int play_state = -77;
            int record_state = -77;
            const int returned = svc_pvr_get_pvr_state(&play_state, &record_state);
            outputs << play_state << "|" << record_state;
            return returned;
        },
    .untouched = "-77|-77",
    .entry = entry(""),
    .is_checked = true,
    .request = request("get_pvr_state", "", "()"),
    .result = Result::is_the_answer,
    .outcomes = {{"(24, 2)", 0, "24|2", {}}, {"(-1, 0)", 0, "-1|0", {}}},
    .call_with_null_outputs = [] { return svc_pvr_get_pvr_state(nullptr, nullptr); },
};

const RemoteCall get_progress{
    .name = "svc_pvr_get_progress",
    .call =
        [](std::ostream &outputs) {
            int out_result = -77;
            std::int64_t relative = -77;
            std::int64_t absolute = -77;
            const int returned = svc_pvr_get_progress(7, &out_result, &relative, &absolute);
            outputs << out_result << "|" << relative << "|" << absolute;
            return returned;
        },
    .untouched = "-77|-77|-77",
    .entry = entry("[handle:7]"),
    .is_checked = true,
    .request = request("get_progress", "i", "(7,)"),
    .result = Result::is_published,
    .outcomes = {{"(1, int64 4294967297, int64 -9223372036854775808, 1)", 0, "1|4294967297|-9223372036854775808", {}},
                 {"(-2, int64 0, int64 1, 0)", 0, "-2|0|1", {}},
                 {"(3, int64 -1, int64 9223372036854775807, -2)", 0, "3|-1|9223372036854775807", {}}},
    .call_with_null_outputs = [] { return svc_pvr_get_progress(7, nullptr, nullptr, nullptr); },
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Status, RemoteCalls,
                         testing::Values(get_channel_info, get_progress, get_pvr_state, set_share_data), name_of);

// One program asks only once it has been told, so each answer has a program of its own.
INSTANTIATE_TEST_SUITE_P(
    IsSupportPvr, RemoteCalls,
    testing::Values(is_support_pvr({refused, refused, {"(1,)", 0, "1", {plain_info("[result:1]")}}}),
                    is_support_pvr({refused, {"(2,)", 0, "0", {plain_info("[result:0]")}}}),
                    is_support_pvr({{"(-1,)", 0, "0", {plain_info("[result:0]")}}})),
    [](const auto &info) { return "Answer" + std::to_string(info.index); });

TEST(GetChannelInfo, RefusesANullRecordOnceTheServiceHasAnswered)
{
    ScriptedService service;
    service.script("get_channel_info", answers(get_channel_info.outcomes.front().answer));
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    logged();
    EXPECT_EQ(svc_pvr_get_channel_info(beyond_63_bits, nullptr), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(service.requests(), std::vector{get_channel_info.request});
    EXPECT_EQ(logged_lines().back(), plain_entry("[return PS_CALL_METHOD_FAILED]"));
}

TEST(GetChannelInfo, AddsNoTerminatorToItsTexts)
{
    ScriptedService service;
    service.script("get_channel_info", answers(get_channel_info.outcomes[2].answer));
    channel_info info;
    std::memset(&info, '#', sizeof info);
    ASSERT_EQ(svc_pvr_get_channel_info(1, &info), PS_SUCCESS);
    EXPECT_EQ(text_of(info.channel_name, sizeof info.channel_name), long_name.substr(0, 254) + "#");
    EXPECT_EQ(text_of(info.program_title, sizeof info.program_title), long_name.substr(0, 254) + "#");
}

TEST(IsSupportPvr, IsNotAskedAgainOnceItWasAnsweredWithAnythingButZero)
{
    ScriptedService service;
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    service.script("is_support_pvr", answers("(1,)"));
    int supported = -77;
    ASSERT_EQ(svc_pvr_is_support_pvr(&supported), PS_SUCCESS);
    service.requests();
    logged();

    service.script("is_support_pvr", answers("(0,)"));
    supported = -77;
    EXPECT_EQ(svc_pvr_is_support_pvr(&supported), PS_SUCCESS);
    EXPECT_EQ(supported, 1);
    EXPECT_EQ(logged_lines(), (Lines{entry(""), plain_info("[result:1]")}));
    ASSERT_EQ(svc_pvr_service_destroy(), PS_SUCCESS);
    EXPECT_EQ(svc_pvr_is_support_pvr(nullptr), PS_SUCCESS);
    EXPECT_EQ(service.requests(), std::vector<Request>());
}

TEST(IsSupportPvr, MakesNoSession)
{
    ScriptedService service;
    service.script("is_support_pvr", answers("(1,)"));
    int supported = -77;
    EXPECT_EQ(svc_pvr_is_support_pvr(&supported), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(supported, -77);
    EXPECT_EQ(service.requests(), std::vector<Request>());
    EXPECT_EQ(logged_lines(),
              (Lines{plain_entry("My master:[0][]"), plain_entry("My master:[0][] g_pvr_proxy == NULL!!")}));
}
