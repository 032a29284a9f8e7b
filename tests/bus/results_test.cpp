// result_to_apps over the bus: what each method tells whom, and what the library logs of it.
#include "bus/news.h"
#include "support/log_capture.h"
#include "support/platform.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <ostream>
#include <regex>

using namespace support;

namespace {

/// A method, a value that it carries, and what becomes of it.
struct Row {
    int method;
    std::string name;
    std::string value;
    std::string app;        ///< as the recorder application gets it; empty for nothing
    std::string third;      ///< as other applications get it; empty for nothing
    std::string app_line;   ///< logged before each callback of the recorder application
    std::string other_line; ///< logged for other applications
    std::string state = {};
};

std::ostream &operator<<(std::ostream &out, const Row &row) { return out << row.name << " " << row.value; }

const std::string big = "9223372036854775809"; // a service id above 2^63

std::string text(const std::string &line, const Row &row)
{
    std::string result = line;
    const std::string code = row.name + "|" + std::to_string(row.method);
    if (const std::size_t at = result.find("CODE"); at != std::string::npos)
        result.replace(at, 4, code);
    return result;
}

Row playback(int method, const char *name, const char *third)
{
    std::string command = method == 7 ? "PS_COMMAND_STOP|1" : "PS_COMMAND_START|0";
    return {method,
            name,
            "(int32 3, int32 -5, int32 4)",
            "result -5 handle 3 current_state 4",
            third,
            "result[handle:3 method:CODE result:-5]",
            *third == '\0' ? ""
                           : "to_other_apps result[handle:3 third_part_method:PS_METHOD_TYPE_PLAY|4 "
                             "third_part_command:" +
                                 command + "]"};
}

std::string recording_value(int result, int type)
{
    return "(int32 3, int32 " + std::to_string(result) + ", int32 77, uint64 " + big + ", int32 " +
           std::to_string(type) + ", int32 6)";
}

/// A recording's result. The third is what others get, in front of service result, id and UID.
Row recording(int method, const char *name, int result, int type, const std::string &type_name, int third_method,
              int command, int success)
{
    const char *methods[] = {"", "PS_METHOD_TYPE_RECORD",          "PS_METHOD_TYPE_TIMER_RECORD", "",
                             "", "PS_METHOD_TYPE_SWITCH_TO_RECORD"};
    const char *commands[] = {"PS_COMMAND_START", "PS_COMMAND_STOP"};
    const auto part = [](const char *word, int value) {
        return value != 0 ? std::string(" ") + word + " " + std::to_string(value) : "";
    };
    return {method,
            name,
            recording_value(result, type),
            (part("result", result) + " handle 3 detail_result 6 service_id " + big).substr(1),
            "method " + std::to_string(third_method) + part("command", command) + part("result", success) +
                part("service_result", result) + " service_id " + big + " UID 77",
            "result[method:CODE handle:3 result:" + std::to_string(result) + " UID:77 service_id:" + big +
                " record_type:" + type_name + "|" + std::to_string(type) + " detail_result:6]",
            std::string("to_other_apps result[third_part_method:") + methods[third_method] + "|" +
                std::to_string(third_method) + " third_part_command:" + commands[command] + "|" +
                std::to_string(command) + " result:" + std::to_string(success) + " service_id:" + big + ", UID:77]"};
}

Row of_normal(int method, const char *name, int result, int third_method, int command, int success)
{
    return recording(method, name, result, 0, "PS_RECORD_TYPE_NORMAL", third_method, command, success);
}

Row nobody_else(Row row)
{
    row.third.clear();
    row.other_line =
        "record_type == PS_RECORD_TYPE_NONE || PS_PRECHECK_RECORDING_AVAILABLE OK no need send to other app.";
    return row;
}

Row bare(int method, const char *name)
{
    return {method, name, "(int32 9,)", "result 9", "", "result[method:CODE result:9]", ""};
}

Row of_handle(int method, const char *name, const char *line)
{
    return {method, name, "(int32 3,)", "handle 3", "", line, ""};
}

Row refusal(int method, const char *name)
{
    return {method,
            name,
            "(int32 3, '/m/a.srf')",
            "handle 3 mnt_path /m/a.srf",
            "",
            "result[handle:3 method:CODE] mnt_path[/m/a.srf]",
            ""};
}

Row cip(int method, const char *name)
{
    return {
        method, name, recording_value(8, 0), "result 8 handle 3 service_id " + big, "", "result[method:CODE result:8]",
        ""};
}

const Row rows[] = {
    playback(0, "PS_PLAY_START", "method 4"),
    playback(1, "PS_PLAY_PAUSE", "method 4"),
    playback(2, "PS_STEP_FRAME", ""),
    playback(3, "PS_PLAY_RESUME", ""),
    playback(4, "PS_PLAY_FORWARD", ""),
    playback(5, "PS_PLAY_REWIND", "method 4"),
    playback(6, "PS_PLAY_SKIP", "method 4"),
    playback(7, "PS_PLAY_STOP", "method 4 command 1"),
    of_normal(8, "PS_RECORD_START", 0, 1, 0, 1),
    of_normal(8, "PS_RECORD_START", 160, 1, 0, 0),
    recording(8, "PS_RECORD_START", 0, 3, "PS_RECORD_TYPE_TIMER", 2, 0, 1),
    nobody_else(recording(8, "PS_RECORD_START", 0, -1, "PS_RECORD_TYPE_NONE", 1, 0, 1)),
    {9, "PS_RECORD_PAUSE", "(int32 3, int32 -5)", "result -5 handle 3", "", "result[handle:3 method:CODE result:-5]",
     ""},
    {10, "PS_RECORD_RESUME", "(int32 3, int32 -5)", "result -5 handle 3", "", "result[handle:3 method:CODE result:-5]",
     ""},
    of_normal(11, "PS_RECORD_STOP", 0, 1, 1, 1),
    recording(11, "PS_RECORD_STOP", 4, 3, "PS_RECORD_TYPE_TIMER", 2, 1, 0),
    of_normal(12, "PS_SWITCH_TO_RECORD", 0, 5, 0, 1),
    recording(12, "PS_SWITCH_TO_RECORD", 4, 3, "PS_RECORD_TYPE_TIMER", 5, 0, 0),
    of_normal(13, "PS_STOP_PVR", 0, 1, 1, 1),
    recording(13, "PS_STOP_PVR", 4, 3, "PS_RECORD_TYPE_TIMER", 2, 1, 0),
    bare(14, "PS_FORMAT"),
    bare(15, "PS_PERFORMANCE_TEST"),
    of_normal(16, "PS_PRECHECK_RECORDING_AVAILABLE", 10, 1, 0, 0),
    recording(16, "PS_PRECHECK_RECORDING_AVAILABLE", 10, 3, "PS_RECORD_TYPE_TIMER", 2, 0, 0),
    nobody_else(of_normal(16, "PS_PRECHECK_RECORDING_AVAILABLE", 0, 1, 0, 0)),
    {17, "PS_PRE_PLAY_START", "(int32 3, int32 5)", "", "method 4 command 2", "",
     "to_other_apps result[third_part_method:PS_METHOD_TYPE_PLAY|4 third_part_command:PS_COMMAND_PRE_START|2 "
     "result:0]"},
    of_handle(100, "PS_PLAY_BEGIN", "result[handle:3 method:CODE]"),
    of_handle(101, "PS_PLAY_END", "result[handle:3 method:CODE]"),
    {102, "PS_REMOVE_DEV", "('/m',)", "mnt_path /m", "", "result[method:CODE mnt_path:/m]", ""},
    bare(103, "PS_SEND_SIGNAL_STATE"),
    {104, "PS_SEND_THUMBNAIL_RESULT", "(int32 0, '/m/a.srf')", "", "", "", ""},
    of_handle(105, "PS_SEND_SYS_PLAY_ERROR", "result[method:CODE handle:3]"),
    of_handle(106, "PS_SEND_SYS_RECORD_ERROR", "result[method:CODE handle:3]"),
    of_handle(107, "PS_SEND_CHANNEL_CHANGE", "result[handle:3 method:CODE]"),
    {108, "PS_UPLOAD_RECORD_DURATION", "(int32 3, int32 60, int32 4000000)",
     "handle 3 detail_result 4000000 duration 60", "", "result[method:CODE handle:3 duration:60 bit_rate:4000000] ",
     ""},
    of_normal(109, "PS_RECORD_EXCEPTION", 0, 1, 1, 1),
    of_normal(109, "PS_RECORD_EXCEPTION", 9, 1, 1, 1),
    of_normal(109, "PS_RECORD_EXCEPTION", 403, 1, 1, 0),
    recording(109, "PS_RECORD_EXCEPTION", 4, 3, "PS_RECORD_TYPE_TIMER", 2, 1, 1),
    of_normal(110, "PS_RECORD_NO_SIGNAL_STOP", 0, 1, 1, 1),
    recording(110, "PS_RECORD_NO_SIGNAL_STOP", 4, 3, "PS_RECORD_TYPE_TIMER", 2, 1, 0),
    of_normal(111, "PS_RECORD_DISK_LESS_FIFTY", 0, 5, 0, 1),
    recording(111, "PS_RECORD_DISK_LESS_FIFTY", 4, 3, "PS_RECORD_TYPE_TIMER", 5, 0, 0),
    of_normal(112, "PS_RECORD_DISK_LESS_ALERT", 1, 5, 0, 0),
    recording(112, "PS_RECORD_DISK_LESS_ALERT", 4, 3, "PS_RECORD_TYPE_TIMER", 5, 0, 0),
    {113, "PS_RECORD_LAUNCH_FAILED", "(int32 -2, int32 77)", "", "service_result 113 service_id 4294967294 UID 77", "",
     "result[command:CODE service_id:4294967294, UID:77]"},
    {200, "PS_PVR_STATE_CHANGE", "(int32 2,)", "", "", "", "result[method:CODE result:2]", "is 2"},
    {201, "PS_RATING_CHANGE", "'anything'", "", "", "result[method:CODE result:0]", ""},
    {202, "PS_ONE_RECORDING_CHANGE_CHANNEL", "(uint64 " + big + ", int32 3)", "handle 3 service_id " + big, "",
     "result[method:CODE service_id:" + big + " handle:3]", ""},
    {203, "PS_TWO_RECORDING_CHANGE_CHANNEL", "(uint64 " + big + ",)", "service_id " + big, "",
     "result[method:CODE service_id:" + big + "]", ""},
    of_normal(204, "PS_STOP_PLAYBACK_BY_CIP", 0, 1, 1, 1),
    recording(204, "PS_STOP_PLAYBACK_BY_CIP", 4, 3, "PS_RECORD_TYPE_TIMER", 2, 1, 0),
    of_normal(205, "PS_STOP_RECORD_BY_CIP", 1, 1, 1, 0),
    recording(205, "PS_STOP_RECORD_BY_CIP", 4, 3, "PS_RECORD_TYPE_TIMER", 2, 1, 0),
    {206, "PS_ALL_RECORDING_CHANGE_CHANNEL", "(uint64 " + big + ",)", "service_id " + big, "",
     "result[method:CODE service_id:" + big + "]", ""},
    {207, "PS_SET_DURATION_ALREADY", "(int32 3,)", "", "method 6 result 1 UID -1", "result[method:CODE result:0]",
     "to_other_apps result[third_part_method:PS_METHOD_TYPE_DURATION_ALREADY|6 third_part_command:PS_COMMAND_START|0 "
     "result:1 UID:-1]"},
    cip(208, "PS_STOP_TIMESHIFT_BY_CIP"),
    cip(210, "PS_STOP_TIMESHIFT_BY_CIP_FOR_ZIGGO"),
    of_handle(211, "PS_SEND_SYS_RECORD_ERROR_DISK_NEED_REPAIR", "result[method:CODE handle:3]"),
    of_handle(212, "PS_SEND_SYS_PLAY_ERROR_DISK_NEED_REPAIR", "result[method:CODE handle:3]"),
    refusal(213, "PS_RECORD_NOT_ALLOWED_BY_CA"),
    refusal(214, "PS_RECORD_NO_CA_DEVICE"),
    refusal(215, "PS_PLAYBACK_NO_CA_DEVICE"),
    refusal(216, "PS_PLAYBACK_NOT_ALLOWED_BY_CA"),
    refusal(217, "PS_PLAYBACK_DESCRAMBLE_DENIED"),
};

class Results : public testing::Test {
protected:
    Results()
    {
        svc_pvr_service_init();
        svc_pvr_register_result_pvr_cb(on_result, nullptr);
        svc_pvr_register_result_pvr_point_cb(on_result_pointer, nullptr);
        svc_pvr_register_to_other_apps_cb(on_third, nullptr);
        svc_pvr_register_get_pvr_state_cb(on_state, nullptr);
    }

    std::vector<std::string> told(int method, const std::string &value)
    {
        emit_result(service, method, value);
        return news.take(service);
    }

    /// What was logged of a signal, behind its reception.
    static Lines result_lines()
    {
        Lines lines;
        bool is_behind = false;
        for (const LoggedLine &line : logged()) {
            if (is_behind && line.function == "_signal_subscribe" && line.text.find("to_pvr_app:") == std::string::npos)
                lines.push_back(std::to_string(line.priority) + " " + line.text.substr(line.text.find("10.8.1]") + 7));
            is_behind = is_behind || line.text.find("Receive   >>>>>>    [command: ") != std::string::npos;
        }
        return lines;
    }

    ScriptedService service;
    News news;
};

class EachResult : public Results, public testing::WithParamInterface<Row> {};

} // namespace

TEST_P(EachResult, ReachesWhomItConcerns)
{
    const Row &row = GetParam();
    std::vector<std::string> expected;
    Lines lines;
    if (!row.app_line.empty()) {
        // A method of 0 is left out like every member that is zero.
        const std::string method = row.method != 0 ? " method " + std::to_string(row.method) : "";
        const std::string members = row.app.empty() ? "" : " " + row.app;
        expected = {"app" + method + members, "pointer app" + method + members};
        lines = {"4 " + text(row.app_line, row), "4 " + text(row.app_line, row)};
    }
    if (!row.third.empty())
        expected.push_back("third " + row.third);
    if (!row.state.empty())
        expected.push_back("state " + row.state);
    if (!row.other_line.empty())
        lines.push_back("4 " + text(row.other_line, row));
    logged();
    EXPECT_EQ(told(row.method, row.value), expected);
    EXPECT_EQ(result_lines(), lines);
}

INSTANTIATE_TEST_SUITE_P(All, EachResult, testing::ValuesIn(rows),
                         [](const auto &info) { return info.param.name + "_" + std::to_string(info.index); });

TEST_F(Results, LogWhatTheyAreBeforeAnythingElse)
{
    logged();
    told(8, recording_value(0, 0));
    Lines lines;
    for (const LoggedLine &line : logged())
        if (line.function == "_signal_subscribe")
            lines.push_back(line.text.substr(line.text.find("10.8.1]") + 7));
    ASSERT_GE(lines.size(), 4U);
    EXPECT_EQ(lines[2], "Receive   >>>>>>    [command: PS_RECORD_START|8]");
    EXPECT_EQ(std::regex_replace(lines[3], std::regex("0x[0-9a-f]+"), "PTR"),
              "[to_pvr_app:PTR][to_pvr_app_point:PTR][to_other_apps:PTR][to_pvr_get_state:PTR]");
}

TEST_F(Results, OfUnknownMethodsAreDropped)
{
    for (const int method : {-1, 18, 50, 99, 114, 150, 199, 209, 218, 2147483647}) {
        logged();
        EXPECT_EQ(told(method, "(int32 1,)"), Lines()) << method;
        const Lines lines = result_lines();
        ASSERT_EQ(lines.size(), 1U) << method;
        EXPECT_TRUE(lines[0].starts_with("6 Received unknown command[")) << lines[0];
        EXPECT_TRUE(lines[0].ends_with("|" + std::to_string(method) + "]")) << lines[0];
    }
}

TEST_F(Results, OfAnotherTypeThanTheirMethodsAreDropped)
{
    const char *values[] = {"int32 1",
                            "(int32 1, int32 2, int32 3, int32 4)",
                            "<int32 1>",
                            "'text'",
                            "@ai []",
                            "(uint32 1,)",
                            "(int64 1, int32 2)",
                            "@a{sv} {}",
                            "(('nested',),)",
                            "(int32 1, 'x', int32 2)"};
    for (const Row &row : rows)
        for (const char *value : values) {
            if (row.method == 201 || row.method == 207)
                continue; // their value is not read
            emit_result(service, row.method, value);
        }
    EXPECT_EQ(news.take(service), Lines());
}

TEST_F(Results, WhoseValueIsNotReadTakeAny)
{
    for (const char *value : {"int32 1", "'text'", "@ai []"}) {
        EXPECT_EQ(told(201, value), (Lines{"app method 201", "pointer app method 201"})) << value;
        EXPECT_EQ(told(207, value),
                  (Lines{"app method 207", "pointer app method 207", "third method 6 result 1 UID -1"}));
    }
}

TEST_F(Results, CutTextsToTheirField)
{
    for (const std::size_t length : {253U, 254U, 255U, 300U, 100000U}) {
        const std::string path(length, 'p');
        const std::string field = path.substr(0, 254);
        EXPECT_EQ(told(102, "('" + path + "',)"),
                  (Lines{"app method 102 mnt_path " + field, "pointer app method 102 mnt_path " + field}));
    }
}

TEST_F(Results, ReachOthersWithoutAnyCallbackOfTheRecorder)
{
    svc_pvr_unregister_result_pvr_cb(on_result);
    svc_pvr_unregister_result_pvr_point_cb(on_result_pointer);
    EXPECT_EQ(told(8, recording_value(0, 0)), (Lines{"third method 1 result 1 service_id " + big + " UID 77"}));
}

TEST_F(Results, ComeWithTheUserDataOfTheirRegistration)
{
    char first[] = "first";
    char second[] = "second";
    svc_pvr_register_result_pvr_cb(on_result, first);
    svc_pvr_register_result_pvr_point_cb(on_result_pointer, second);
    EXPECT_EQ(told(101, "(int32 3,)"),
              (Lines{"app method 101 handle 3 to first", "pointer app method 101 handle 3 to second"}));
    svc_pvr_register_to_other_apps_cb(on_third, first);
    svc_pvr_register_get_pvr_state_cb(on_state, second);
    EXPECT_EQ(told(17, "(int32 3, int32 5)"), (Lines{"third method 4 command 2 to first"}));
    EXPECT_EQ(told(200, "(int32 2,)"), (Lines{"state is 2 to second"}));
}

TEST_F(Results, GoOnWithoutWhatACallbackHasTakenBack)
{
    set_reaction([] {
        svc_pvr_unregister_result_pvr_point_cb(on_result_pointer);
        svc_pvr_unregister_to_other_apps_cb(on_third);
    });
    EXPECT_EQ(told(8, recording_value(0, 0)), (Lines{"app method 8 handle 3 detail_result 6 service_id " + big}));
}

TEST_F(Results, GoOnWhenACallbackGivesUpTheSession)
{
    set_reaction([] { svc_pvr_service_destroy(); });
    EXPECT_EQ(told(101, "(int32 3,)"), (Lines{"app method 101 handle 3", "pointer app method 101 handle 3"}));
    set_reaction(nullptr);
    svc_pvr_service_init();
    EXPECT_EQ(told(101, "(int32 3,)"), Lines()) << "nothing was registered in the new session";
}

TEST_F(Results, LetACallbackCallTheService)
{
    service.script("is_date_set", answers("(1,)"));
    set_reaction([] {
        int is_set = 0;
        EXPECT_EQ(svc_pvr_is_date_set(&is_set), PS_SUCCESS);
        EXPECT_EQ(is_set, 1);
    });
    EXPECT_EQ(told(101, "(int32 3,)").size(), 2U);
}
