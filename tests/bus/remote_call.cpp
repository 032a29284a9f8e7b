#include "bus/remote_call.h"

#include "pvr_service_api.h"
#include "support/platform.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <span>
#include <sstream>
#include <thread>

using namespace support;

namespace {

struct Done {
    int returned;
    std::string outputs;
    Lines lines;
};

Done run(const RemoteCall &row)
{
    logged();
    std::ostringstream outputs;
    const int returned = row.call(outputs);
    return {returned, outputs.str(), logged_lines()};
}

/// The lines of a call: its entry, the support check, and the rest.
Lines lines_of(const RemoteCall &row, const Lines &rest)
{
    Lines lines{row.entry};
    if (row.is_checked)
        lines.push_back(detail(support_line(1)));
    lines.insert(lines.end(), rest.begin(), rest.end());
    return lines;
}

void make_session()
{
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    logged();
}

/// The type of a value given as GVariant text.
std::string type_of(const std::string &text)
{
    GVariant *value = g_variant_ref_sink(g_variant_parse(nullptr, text.c_str(), nullptr, nullptr, nullptr));
    std::string type = g_variant_get_type_string(value);
    g_variant_unref(value);
    return type;
}

/// Has an earlier call leave the result 1 behind.
void leave_one_behind(ScriptedService &service)
{
    service.script("play_start", answers("(1,)"));
    ASSERT_EQ(svc_pvr_play_start(1, "/m/other.srf", 0), PS_SUCCESS);
    ASSERT_EQ(svc_pvr_set_highlight_player_flag(0), PS_SUCCESS);
    service.requests();
}

void expect_each_outcome(const RemoteCall &row, ScriptedService &service)
{
    ASSERT_FALSE(row.outcomes.empty());
    for (const Outcome &outcome : row.outcomes) {
        SCOPED_TRACE(row.name + ": " + outcome.answer.substr(0, 200));
        service.script(row.request.method, answers(outcome.answer));
        const Done done = run(row);
        EXPECT_EQ(service.requests(), std::vector{row.request});
        EXPECT_EQ(done.returned, outcome.returned);
        EXPECT_EQ(done.outputs, outcome.outputs);
        EXPECT_EQ(done.lines, lines_of(row, outcome.lines));
    }
}

void log_under_its_own_name(const RemoteCall &row)
{
    ScriptedService service;
    make_session();
    service.script(row.request.method, answers(row.outcomes.front().answer));
    std::ostringstream ignored;
    row.call(ignored);
    for (const LoggedLine &line : logged()) {
        if (line.function == "_is_support_pvr")
            continue;
        EXPECT_EQ(line.function, row.name) << line.text;
        EXPECT_EQ(line.file, "pvr_service_api.cpp");
        EXPECT_EQ(line.tag, "PVR_SVC_API");
        EXPECT_EQ(line.log_id, 0);
    }
}

void leave_outputs_untouched_when_the_bus_reports_an_error(const RemoteCall &row)
{
    ScriptedService service;
    make_session();
    for (const std::string name :
         {"org.freedesktop.DBus.Error.AccessDenied", "org.freedesktop.DBus.Error.UnknownMethod",
          "org.freedesktop.DBus.Error.InvalidArgs", "org.freedesktop.DBus.Error.LimitsExceeded",
          "org.freedesktop.DBus.Error.Timeout", "org.freedesktop.DBus.Error.Failed", "org.example.OfItsOwn"}) {
        service.script(row.request.method, fails(name, "no %s %n today"));
        const Done done = run(row);
        EXPECT_EQ(done.returned, PS_CALL_METHOD_FAILED);
        EXPECT_EQ(done.outputs, row.untouched);
        EXPECT_EQ(done.lines, lines_of(row, {failure(" GDBus error: GDBus.Error:" + name + ": no %s %n today!!")}));
    }
}

void take_a_reply_of_another_type_for_an_error(const RemoteCall &row)
{
    ScriptedService service;
    make_session();
    const std::string expected = type_of(row.outcomes.front().answer);
    const std::vector<std::string> replies{"()",
                                           "(true,)",
                                           "(5,)",
                                           "(uint32 5,)",
                                           "(int64 5,)",
                                           "(uint64 5,)",
                                           "(5.5,)",
                                           "(byte 5,)",
                                           "(<5>,)",
                                           "((5,),)",
                                           "('" + std::string(100'000, 'x') + "',)",
                                           "(objectpath '/5',)",
                                           "(@ai [],)",
                                           "(5, 5)",
                                           "(5, 5, 5, 5, 5, 5)",
                                           "(int64 1, @av [], 'x')",
                                           "([(1, 2)],)",
                                           "(@a(v) [], @a(v) [])"};
    int wrong = 0;
    for (const std::string &reply : replies) {
        if (type_of(reply) == expected)
            continue;
        ++wrong;
        service.script(row.request.method, answers(reply));
        const Done done = run(row);
        EXPECT_EQ(done.returned, PS_CALL_METHOD_FAILED) << reply.substr(0, 50);
        EXPECT_EQ(done.outputs, row.untouched) << reply.substr(0, 50);
        ASSERT_EQ(done.lines.size(), lines_of(row, {"the error"}).size()) << reply.substr(0, 50);
        EXPECT_NE(done.lines.back().find("GDBus error: Method “" + row.request.method + "” returned type"),
                  std::string::npos)
            << done.lines.back();
    }
    EXPECT_GE(wrong, 16);
}

void fail_without_a_service(const RemoteCall &row)
{
    make_session();
    const Done done = run(row);
    EXPECT_EQ(done.returned, PS_CALL_METHOD_FAILED);
    EXPECT_EQ(done.outputs, row.untouched);
    EXPECT_EQ(done.lines,
              lines_of(row, {failure(" GDBus error: GDBus.Error:org.freedesktop.DBus.Error.ServiceUnknown: The name "
                                     "org.vexan.tv.pvr.server was not provided by any .service files!!")}));
}

void skip_null_outputs(const RemoteCall &row)
{
    if (!row.call_with_null_outputs)
        return; // nothing to skip
    ScriptedService service;
    make_session();
    for (const Outcome &outcome : row.outcomes) {
        service.script(row.request.method, answers(outcome.answer));
        EXPECT_EQ(row.call_with_null_outputs(), outcome.returned);
    }
    EXPECT_EQ(service.requests().size(), row.outcomes.size());
}

void keep_the_services_result_only_where_it_is_not_the_answer(const RemoteCall &row)
{
    ScriptedService service;
    make_session();
    for (const Outcome &outcome : row.outcomes) {
        ASSERT_NO_FATAL_FAILURE(leave_one_behind(service));
        service.script(row.request.method, answers(outcome.answer));
        run(row);
        // The result is the last value of the answer: the first and only one, or what travels beside a value.
        const auto comma = outcome.answer.find_last_of(",(", outcome.answer.find_last_not_of(",)"));
        const bool is_one = std::atoi(outcome.answer.c_str() + comma + 1) == 1;
        const bool still_one = row.result == RemoteCall::Result::is_the_answer || is_one;
        EXPECT_EQ(svc_pvr_set_highlight_player_flag(0), still_one ? PS_SUCCESS : PS_CALL_METHOD_FAILED)
            << outcome.answer.substr(0, 200);
    }
}

void ask_the_service_only_where_the_product_records_unless_they_never_check(const RemoteCall &row)
{
    ScriptedService service;
    make_session();
    service.script(row.request.method, answers(row.outcomes.front().answer));
    set_product(Product::does_not_record);
    const Done done = run(row);
    if (!row.is_checked) {
        EXPECT_EQ(done.returned, row.outcomes.front().returned);
        EXPECT_EQ(service.requests(), std::vector{row.request});
        return;
    }
    EXPECT_EQ(done.returned, PS_CALL_METHOD_FAILED);
    EXPECT_EQ(done.outputs, row.untouched);
    EXPECT_EQ(done.lines,
              (Lines{row.entry, detail(support_line(0)), plain_info(support_line(0)), info(" did not support PVR!!")}));
    EXPECT_EQ(service.requests(), std::vector<Request>());
}

struct Property {
    const char *name;
    void (*holds)(const RemoteCall &row);
};

/// What holds for every call, whatever its row says.
constexpr Property properties[] = {
    {"LogUnderItsOwnName", log_under_its_own_name},
    {"LeaveOutputsUntouchedWhenTheBusReportsAnError", leave_outputs_untouched_when_the_bus_reports_an_error},
    {"TakeAReplyOfAnotherTypeForAnError", take_a_reply_of_another_type_for_an_error},
    {"FailWithoutAService", fail_without_a_service},
    {"SkipNullOutputs", skip_null_outputs},
    {"KeepTheServicesResultOnlyWhereItIsNotTheAnswer", keep_the_services_result_only_where_it_is_not_the_answer},
    {"AskTheServiceOnlyWhereTheProductRecordsUnlessTheyNeverCheck",
     ask_the_service_only_where_the_product_records_unless_they_never_check},
};

/// A row, and what of it one process looks at: to start one takes longer than most of what is looked at.
struct Turn {
    std::string name;
    const RemoteCall *row;
    std::span<const Property> properties;
};

/// Asks only until it has been told, which no new session makes it forget.
bool is_told_once(const RemoteCall &row) { return row.name == "svc_pvr_is_support_pvr"; }

std::vector<Turn> all_turns()
{
    std::vector<Turn> turns;
    for (const RemoteCall &row : all_calls()) {
        if (!is_told_once(row))
            turns.push_back({row.name + row.variant, &row, properties});
        else
            for (const Property &property : properties)
                turns.push_back({row.name + row.variant + property.name, &row, {&property, 1}});
    }
    return turns;
}

/// Leaves nothing behind that the next property would find.
void end_session()
{
    set_product(Product::records);
    svc_pvr_service_destroy();
    logged();
}

/// By reference: the test framework copies its parameters.
class RemoteCalls : public testing::TestWithParam<std::reference_wrapper<const RemoteCall>> {};
class EveryRemoteCall : public testing::TestWithParam<Turn> {};

} // namespace

INSTANTIATE_TEST_SUITE_P(All, RemoteCalls,
                         testing::ValuesIn(std::vector<std::reference_wrapper<const RemoteCall>>(all_calls().begin(),
                                                                                                 all_calls().end())),
                         [](const auto &info) { return info.param.get().name + info.param.get().variant; });

INSTANTIATE_TEST_SUITE_P(All, EveryRemoteCall, testing::ValuesIn(all_turns()),
                         [](const auto &info) { return info.param.name; });

TEST_P(RemoteCalls, SendItsRequestAndMakeWhatItsRuleSaysOfEachAnswer)
{
    ScriptedService service;
    make_session();
    expect_each_outcome(GetParam(), service);
}

TEST_P(EveryRemoteCall, HasWhatHoldsForAll)
{
    for (const Property &property : GetParam().properties) {
        SCOPED_TRACE(property.name);
        property.holds(*GetParam().row);
        end_session();
    }
}

TEST(LongLists, AreWalkedWhole)
{
    ScriptedService service;
    make_session();
    for (const RemoteCall &row : long_list_calls())
        expect_each_outcome(row, service);
}

TEST(RemoteCallsAllAtOnce, GiveUpOnASilentServiceAndAreNotConfusedByItsLateAnswers)
{
    // All wait at the same time, so that the time-out of the bus passes once. One row per function: the bus
    // lets a process wait for 128 replies at most.
    ScriptedService service;
    std::vector<RemoteCall> rows;
    for (const RemoteCall &row : all_calls())
        if (rows.empty() || rows.back().name != row.name)
            rows.push_back(row);
    for (const RemoteCall &row : rows)
        service.script(row.request.method, stays_silent());
    make_session();
    std::vector<std::thread> threads;
    for (const RemoteCall &row : rows)
        threads.emplace_back([&row] {
            std::ostringstream outputs;
            EXPECT_EQ(row.call(outputs), PS_CALL_METHOD_FAILED) << row.name;
            EXPECT_EQ(outputs.str(), row.untouched) << row.name;
        });
    for (std::thread &thread : threads)
        thread.join();

    const auto first_answer = [&rows](const std::string &method) {
        return std::find_if(rows.begin(), rows.end(),
                            [&](const RemoteCall &row) { return row.request.method == method; })
            ->outcomes.front()
            .answer;
    };
    EXPECT_EQ(service.answer_late(first_answer), rows.size());
    for (const RemoteCall &row : rows) {
        const Outcome &second = row.outcomes.back();
        service.script(row.request.method, answers(second.answer));
        if (is_told_once(row))
            continue;
        std::ostringstream outputs;
        EXPECT_EQ(row.call(outputs), second.returned) << row.name;
        EXPECT_EQ(outputs.str(), second.outputs) << row.name;
    }
}
