#include "bus/remote_call.h"

#include "pvr_service_api.h"
#include "support/platform.h"

#include <cstring>
#include <sstream>

using namespace support;

std::ostream &operator<<(std::ostream &out, const RemoteCall &row) { return out << row.name; }

std::string text_of(const char *buffer, std::size_t size) { return {buffer, strnlen(buffer, size)}; }

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

/// Has an earlier call leave the result 1 behind.
void leave_one_behind(ScriptedService &service)
{
    service.script("play_start", answers("(1,)"));
    ASSERT_EQ(svc_pvr_play_start(1, "/m/other.srf", 0), PS_SUCCESS);
    ASSERT_EQ(svc_pvr_set_highlight_player_flag(0), PS_SUCCESS);
    service.requests();
}

} // namespace

TEST_P(RemoteCalls, SendItsRequestAndMakeWhatItsRuleSaysOfEachAnswer)
{
    const RemoteCall &row = GetParam();
    ScriptedService service;
    make_session();
    ASSERT_FALSE(row.outcomes.empty());
    for (const Outcome &outcome : row.outcomes) {
        SCOPED_TRACE(outcome.answer.substr(0, 200));
        service.script(row.request.method, answers(outcome.answer));
        const Done done = run(row);
        EXPECT_EQ(service.requests(), std::vector{row.request});
        EXPECT_EQ(done.returned, outcome.returned);
        EXPECT_EQ(done.outputs, outcome.outputs);
        EXPECT_EQ(done.lines, lines_of(row, outcome.lines));
    }
}

TEST_P(RemoteCalls, LogUnderItsOwnName)
{
    const RemoteCall &row = GetParam();
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

TEST_P(RemoteCalls, LeaveOutputsUntouchedWhenTheBusReportsAnError)
{
    const RemoteCall &row = GetParam();
    ScriptedService service;
    make_session();
    for (const std::string name : {"org.freedesktop.DBus.Error.AccessDenied",
                                   "org.freedesktop.DBus.Error.UnknownMethod", "org.example.OfItsOwn"}) {
        service.script(row.request.method, fails(name, "no %s %n today"));
        const Done done = run(row);
        EXPECT_EQ(done.returned, PS_CALL_METHOD_FAILED);
        EXPECT_EQ(done.outputs, row.untouched);
        EXPECT_EQ(done.lines, lines_of(row, {failure(" GDBus error: GDBus.Error:" + name + ": no %s %n today!!")}));
    }
}

TEST_P(RemoteCalls, TakeAReplyOfAnotherTypeForAnError)
{
    const RemoteCall &row = GetParam();
    ScriptedService service;
    make_session();
    for (const std::string wrong : {"()", "(true,)", "(int64 1, @av [], 'x')", "(1, 1, 1, 1, 1, 1)", "([(1, 2)],)"}) {
        service.script(row.request.method, answers(wrong));
        const Done done = run(row);
        EXPECT_EQ(done.returned, PS_CALL_METHOD_FAILED) << wrong;
        EXPECT_EQ(done.outputs, row.untouched) << wrong;
        ASSERT_EQ(done.lines.size(), lines_of(row, {"the error"}).size()) << wrong;
        EXPECT_NE(done.lines.back().find("GDBus error: Method “" + row.request.method + "” returned type"),
                  std::string::npos)
            << done.lines.back();
    }
}

TEST_P(RemoteCalls, FailWithoutAService)
{
    const RemoteCall &row = GetParam();
    make_session();
    const Done done = run(row);
    EXPECT_EQ(done.returned, PS_CALL_METHOD_FAILED);
    EXPECT_EQ(done.outputs, row.untouched);
    EXPECT_EQ(done.lines,
              lines_of(row, {failure(" GDBus error: GDBus.Error:org.freedesktop.DBus.Error.ServiceUnknown: The name "
                                     "org.vexan.tv.pvr.server was not provided by any .service files!!")}));
}

TEST_P(RemoteCalls, SkipNullOutputs)
{
    const RemoteCall &row = GetParam();
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

TEST_P(RemoteCalls, KeepTheServicesResultOnlyWhereItIsNotTheAnswer)
{
    const RemoteCall &row = GetParam();
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

TEST_P(RemoteCalls, AskTheServiceOnlyWhereTheProductRecordsUnlessTheyNeverCheck)
{
    const RemoteCall &row = GetParam();
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
