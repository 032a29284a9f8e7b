// Registering callbacks: what is checked and logged in which order, and the one connected handler.
#include "bus/main_context.h"
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/platform.h"
#include "support/scripted_service.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <ostream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

using namespace support;

namespace {

void on_signal(pvr_service_signal, void *) {}
void on_result(pvr_service_result, void *) {}

int data = 0;

const std::string nobody = "My master:[0][]";
const std::string parameters = "| with param[func:PTR user_data:PTR]";

int handler_id(const Lines &lines) { return std::stoi(lines.back().substr(lines.back().rfind(':') + 1)); }

struct Registration {
    const char *name;
    int (*call)();
    int (*call_with_null)();
};

const Registration of_signals{"Signal", [] { return svc_pvr_register_signal_cb(on_signal, &data); },
                              [] { return svc_pvr_register_signal_cb(nullptr, &data); }};
const Registration of_results{"Result", [] { return svc_pvr_register_result_pvr_cb(on_result, &data); },
                              [] { return svc_pvr_register_result_pvr_cb(nullptr, &data); }};

std::ostream &operator<<(std::ostream &out, const Registration &row) { return out << row.name; }

class Registrations : public testing::TestWithParam<Registration> {};

} // namespace

TEST(RegisterSignalCb, TakesTheIdentityAndLogsBeforeItChecks)
{
    set_product(Product::does_not_record);
    EXPECT_EQ(of_signals.call(), PS_CALL_METHOD_FAILED);
    Lines lines = logged_lines();
    lines.erase(lines.begin(), lines.begin() + 2); // the identity's own
    EXPECT_EQ(lines, (Lines{entry(parameters), detail(support_line(0)), plain_info(support_line(0)),
                            info(" did not support PVR!!")}));
}

TEST(RegisterResultPvrCb, ChecksBeforeItTakesTheIdentityAndLogs)
{
    set_product(Product::does_not_record);
    EXPECT_EQ(of_results.call(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines(), (Lines{detail(support_line(0)), plain_info(support_line(0)),
                                     plain_info(nobody + " did not support PVR!!")}));
}

TEST_P(Registrations, ConnectNothingWithoutASession)
{
    EXPECT_EQ(GetParam().call(), PS_SUCCESS);
    EXPECT_EQ(logged_lines().back(), plain_info("[g_pvr_proxy: (nil)] [g_handler_id:0]"));
    svc_pvr_service_init();
    logged();
    EXPECT_EQ(GetParam().call(), PS_SUCCESS);
    EXPECT_NE(handler_id(logged_lines()), 0);
}

TEST_P(Registrations, ConnectWithoutAFunctionToo)
{
    svc_pvr_service_init();
    logged();
    EXPECT_EQ(GetParam().call_with_null(), PS_SUCCESS);
    EXPECT_NE(handler_id(logged_lines()), 0);
}

INSTANTIATE_TEST_SUITE_P(All, Registrations, testing::Values(of_signals, of_results),
                         [](const auto &info) { return std::string(info.param.name); });

// ---- what the first call of a process logs, and in which order

namespace {

void on_result_pointer(pvr_service_result *, void *) {}
void on_third(pvr_result_third, void *) {}
void on_state(int, void *) {}
void on_signal_pointer(pvr_service_signal *, void *) {}

Lines check() { return {detail(support_line(1))}; }
Lines identity()
{
    const std::string path = std::filesystem::read_symlink("/proc/self/exe");
    return {plain_info("Called szPID:" + path),
            plain_info("g_thread_id[" + std::to_string(getpid()) + "] g_thread_name[" +
                       path.substr(path.rfind('/') + 1) + "]")};
}
Lines entry_with_data() { return {entry(parameters)}; }
Lines entry_with_function() { return {entry("| with param[func:PTR]")}; }
Lines connection() { return {plain_info("[g_pvr_proxy: (nil)] [g_handler_id:0]")}; }
Lines connection_of_pointer()
{
    return {plain_info("signal_pointer_cb_func[PTR] g_signal_pointer_data[PTR] [g_pvr_proxy:(nil)] [g_handler_id:0]")};
}
Lines stored() { return {plain_info("idx[0]: func[PTR] is registered")}; }
Lines not_found() { return {plain_info("func[PTR] is not found and not unregistered")}; }

struct FirstCall {
    const char *name;
    int (*call)();
    std::vector<Lines (*)()> logged;
};

std::ostream &operator<<(std::ostream &out, const FirstCall &row) { return out << row.name; }

template <auto Register, auto Function>
int add()
{
    return Register(Function, &data);
}
template <auto Unregister, auto Function>
int remove()
{
    return Unregister(Function);
}

class FirstRegistration : public testing::TestWithParam<FirstCall> {};

} // namespace

TEST_P(FirstRegistration, LogsEachStepInItsOrder)
{
    EXPECT_EQ(GetParam().call(), PS_SUCCESS);
    Lines expected;
    for (const auto &step : GetParam().logged)
        for (const std::string &line : step())
            expected.push_back(line);
    EXPECT_EQ(logged_lines(), expected);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(
    All, FirstRegistration,
    testing::Values(
        FirstCall{"svc_pvr_register_result_pvr_cb", add<svc_pvr_register_result_pvr_cb, on_result>,
                  {check, identity, entry_with_data, connection}},
        FirstCall{"svc_pvr_register_result_pvr_point_cb", add<svc_pvr_register_result_pvr_point_cb, on_result_pointer>,
                  {check, identity, entry_with_data, connection}},
        FirstCall{"svc_pvr_register_to_other_apps_cb", add<svc_pvr_register_to_other_apps_cb, on_third>,
                  {check, identity, entry_with_data, connection}},
        FirstCall{"svc_pvr_register_get_pvr_state_cb", add<svc_pvr_register_get_pvr_state_cb, on_state>,
                  {check, identity, entry_with_data, connection}},
        FirstCall{"svc_pvr_register_signal_cb", add<svc_pvr_register_signal_cb, on_signal>,
                  {identity, entry_with_data, check, connection}},
        FirstCall{"svc_pvr_register_signal_pointer_cb", add<svc_pvr_register_signal_pointer_cb, on_signal_pointer>,
                  {identity, entry_with_data, check, connection_of_pointer}},
        FirstCall{"svc_pvr_register_signal_cb_in_list", add<svc_pvr_register_signal_cb_in_list, on_signal>,
                  {identity, entry_with_data, check, stored, connection}},
        FirstCall{"svc_pvr_unregister_result_pvr_cb", remove<svc_pvr_unregister_result_pvr_cb, on_result>,
                  {check, identity, entry_with_function, connection}},
        FirstCall{"svc_pvr_unregister_result_pvr_point_cb",
                  remove<svc_pvr_unregister_result_pvr_point_cb, on_result_pointer>,
                  {check, identity, entry_with_function, connection}},
        FirstCall{"svc_pvr_unregister_to_other_apps_cb", remove<svc_pvr_unregister_to_other_apps_cb, on_third>,
                  {check, identity, entry_with_function, connection}},
        FirstCall{"svc_pvr_unregister_get_pvr_state_cb", remove<svc_pvr_unregister_get_pvr_state_cb, on_state>,
                  {check, identity, entry_with_function, connection}},
        FirstCall{"svc_pvr_unregister_signal_cb", remove<svc_pvr_unregister_signal_cb, on_signal>,
                  {check, identity, entry_with_function}},
        FirstCall{"svc_pvr_unregister_signal_pointer_cb",
                  remove<svc_pvr_unregister_signal_pointer_cb, on_signal_pointer>,
                  {check, identity, entry_with_function}},
        FirstCall{"svc_pvr_unregister_signal_cb_in_list", remove<svc_pvr_unregister_signal_cb_in_list, on_signal>,
                  {check, identity, entry_with_function, not_found}}),
    [](const auto &info) { return std::string(info.param.name); });
// clang-format on

TEST(Handler, IsConnectedOnceHoweverManyAreRegistered)
{
    ScriptedService service;
    svc_pvr_service_init();
    logged();
    of_signals.call();
    const int id = handler_id(logged_lines());
    of_results.call();
    EXPECT_EQ(handler_id(logged_lines()), id);
    of_signals.call();
    EXPECT_EQ(handler_id(logged_lines()), id);

    service.emit("send_pvr_signal_to_apps", "(int32 1, '00')");
    service.emit("result_to_apps", "(int32 1, <int32 5>)");
    service.emit("of_another_name", "(int32 1,)");
    Lines lines;
    run_until(nullptr, [&] {
        for (const std::string &line : logged_lines())
            if (line.starts_with(plain_entry("Receive signal")) || line.starts_with(plain_entry("[g_pvr_app_data")))
                lines.push_back(line);
        return lines.size() >= 6;
    });
    Lines expected;
    for (const char *name : {"send_pvr_signal_to_apps", "result_to_apps", "of_another_name"}) {
        std::ostringstream receive;
        receive << "with name[" << name << "] and proxy[PTR]";
        expected.push_back(receive.str());
        expected.push_back(plain_entry("[g_pvr_app_data:PTR][g_other_apps_data:(nil)][g_pvr_pvr_state:(nil)]"));
    }
    for (std::size_t i = 0; i < lines.size(); i += 2) // the sender is a connection's number
        EXPECT_EQ(lines[i].find(plain_entry("Receive signal from :1.")), 0U) << lines[i];
    for (std::size_t i = 0; i < lines.size(); i += 2)
        lines[i] = lines[i].substr(lines[i].find("with name"));
    EXPECT_EQ(lines, expected);
}

TEST(Handler, IsDisconnectedWithTheSession)
{
    ScriptedService service;
    svc_pvr_service_init();
    of_signals.call();
    EXPECT_EQ(svc_pvr_service_destroy(), PS_SUCCESS);
    svc_pvr_service_init();
    logged();
    service.emit("send_pvr_signal_to_apps", "(int32 1, '00')");
    service.script("play_start", answers("(1,)"));
    svc_pvr_play_start(1, "", 0); // came behind the signal
    while (g_main_context_iteration(nullptr, FALSE) == TRUE)
        ;
    for (const LoggedLine &line : logged())
        EXPECT_NE(line.function, "_signal_subscribe");
    of_signals.call(); // a registration in the new session connects it again
    EXPECT_NE(handler_id(logged_lines()), 0);
}
