// A child made by fork never touches its parent's session.
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/scripted_service.h"

#include <functional>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace support;

namespace {

void ignore_signal(pvr_service_signal, void *) {}
void ignore_result(pvr_service_result, void *) {}

/// Runs a check in a forked child; the child's complaint, empty when it had none.
std::string in_a_child(const std::function<std::string()> &check)
{
    int result[2];
    if (pipe(result) != 0)
        return "no pipe";
    const pid_t child = fork();
    if (child == 0) {
        const std::string complaint = check();
        _exit(write(result[1], complaint.data(), complaint.size()) < 0 ? 2 : 0);
    }
    close(result[1]);
    std::string complaint;
    char byte = 0;
    while (read(result[0], &byte, 1) == 1)
        complaint += byte;
    close(result[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? complaint : complaint + " (the child did not end well)";
}

struct ForkedCall {
    const char *name;
    int (*call)();
};

const ForkedCall calls[] = {
    {"play_start", [] { return svc_pvr_play_start(1, "", 0); }},
    {"stop_pvr_sync", [] { return svc_pvr_stop_pvr_sync(1, ""); }},
    {"remove_inf", [] { return svc_pvr_remove_inf("/m/a.inf", 0); }},
    {"is_support_pvr", [] { return svc_pvr_is_support_pvr(nullptr); }},
    {"service_init", [] { return svc_pvr_service_init(); }},
    {"service_destroy", [] { return svc_pvr_service_destroy(); }},
    {"register_signal_cb", [] { return svc_pvr_register_signal_cb(ignore_signal, nullptr); }},
    {"register_result_pvr_cb", [] { return svc_pvr_register_result_pvr_cb(ignore_result, nullptr); }},
};

std::string all_refused()
{
    std::string complaint;
    for (const ForkedCall &row : calls) {
        logged();
        const int returned = row.call();
        if (returned != PS_CALL_METHOD_FAILED)
            complaint += std::string(row.name) + " returned " + std::to_string(returned) + "; ";
        const Lines lines = logged_lines();
        const std::string expected = failure(" the session belongs to the parent process!!"); // names the child
        if (lines.empty() || lines.back() != expected)
            complaint += std::string(row.name) + " logged " + (lines.empty() ? "nothing" : lines.back()) + "; ";
    }
    return complaint;
}

} // namespace

TEST(ForkedChild, IsRefusedAtOnceAndNamedByItsOwnPid)
{
    ScriptedService service;
    service.script("play_start", answers("(1,)"));
    ASSERT_EQ(svc_pvr_play_start(1, "", 0), PS_SUCCESS);
    service.requests();
    EXPECT_EQ(in_a_child(all_refused), "");
    EXPECT_EQ(service.requests(), std::vector<Request>());
    EXPECT_EQ(svc_pvr_play_start(1, "", 0), PS_SUCCESS); // the parent's session is unharmed
}

TEST(ForkedChild, IsRefusedThoughTheParentHasEndedItsSession)
{
    ScriptedService service;
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    ASSERT_EQ(svc_pvr_service_destroy(), PS_SUCCESS);
    EXPECT_EQ(in_a_child(all_refused), ""); // GDBus's own thread stayed with the parent
}

TEST(ForkedChild, IsRefusedWhileTheParentsThreadsHoldTheSessionsLock)
{
    ScriptedService service;
    service.script("play_start", answers("(1,)"));
    std::atomic<bool> is_over{false};
    std::thread caller([&] {
        while (!is_over) {
            svc_pvr_service_init();
            svc_pvr_service_destroy();
        }
    });
    while (svc_pvr_play_start(1, "", 0) != PS_SUCCESS)
        ;
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(in_a_child([] {
                      return svc_pvr_play_start(1, "", 0) == PS_CALL_METHOD_FAILED &&
                                     svc_pvr_service_init() == PS_CALL_METHOD_FAILED
                                 ? std::string()
                                 : std::string("was not refused");
                  }),
                  "");
    is_over = true;
    caller.join();
}

TEST(ForkedChild, OfAProcessThatNeverHadASessionMakesItsOwn)
{
    const std::string complaint = in_a_child([]() -> std::string {
        ScriptedService service;
        service.script("play_start", answers("(1,)"));
        return svc_pvr_play_start(1, "", 0) == PS_SUCCESS ? "" : logged_lines().back();
    });
    EXPECT_EQ(complaint, "");
}

// What asks the service nothing needs no session of its own.
TEST(ForkedChild, ReadsTheFilesBesideRecordingsAndTheErrorTexts)
{
    ScriptedService service;
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    const std::string complaint = in_a_child([]() -> std::string {
        pvr_file_info_s info{};
        yuv_info picture{};
        char text[255];
        if (svc_pvr_get_pvr_file_info(PVR_GOLDEN_FILES "/ardel-television.srf", &info) != PS_SUCCESS ||
            info.duration == 0)
            return "no info; " + logged_lines().back();
        if (svc_pvr_get_yuv_info(PVR_GOLDEN_FILES "/picture.srf", &picture) != PS_SUCCESS)
            return "no colour format; " + logged_lines().back();
        if (svc_pvr_get_err_text(202, 0, text) != PS_SUCCESS)
            return "no error text; " + logged_lines().back();
        return "";
    });
    EXPECT_EQ(complaint, "");
}
