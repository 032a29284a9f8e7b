// The session: how it begins, what it logs, how it ends.
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/platform.h"
#include "support/private_bus.h"
#include "support/scripted_service.h"

#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

using namespace support;

namespace {

std::string executable()
{
    return my_master().substr(my_master().rfind('[') + 1, my_master().rfind(']') - my_master().rfind('[') - 1);
}

std::string pid() { return std::to_string(getpid()); }

const std::string bound_to = PVR_CATALOGUES;

std::string catalogue_line(bool is_bound)
{
    return plain_info("bDomainInit:" + std::to_string(is_bound) +
                      " PVR_SERVICE_API_MO_NAME:org.vexan.pvr-service-api, PVR_SERVICE_API_MO_LOCALE:" + bound_to);
}

const Lines identity_lines{
    plain_info("Called szPID:" + std::string(std::filesystem::read_symlink("/proc/self/exe"))),
    plain_info("g_thread_id[" + pid() + "] g_thread_name[" + executable() + "]"),
};

const Lines start_lines{
    plain_entry("this func is started, g_mutex[PTR]"),
    plain_entry("before calling pthread_mutex_lock() with g_mutex address[PTR]"),
};

const Lines creation_lines{
    detail("Start to init pvr-service client by Thread:[" + pid() + "] [" + executable() + "]"),
    plain_entry("Last modified date[2016-3-3 12:33]"),
    detail(support_line(1)),
    detail("dbus_threads_init_default is called"),
};

Lines joined(std::initializer_list<Lines> parts)
{
    Lines all;
    for (const Lines &part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

const Lines success_lines{info("  [new g_pvr_proxy: PTR] "),
                          detail("g_pvr_proxy initilize success, PROJECT_MODEL[emulator]."), catalogue_line(false),
                          plain_info("pbindtextdomain:" + bound_to)};

} // namespace

TEST(ServiceInit, MakesASessionWithoutAServiceToTalkTo)
{
    EXPECT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    EXPECT_EQ(logged_lines(), joined({identity_lines, start_lines, creation_lines, success_lines}));
}

TEST(ServiceInit, LogsUnderItsOwnNameAndItsHelpers)
{
    svc_pvr_service_init();
    for (const LoggedLine &line : logged()) {
        EXPECT_EQ(line.file, "pvr_service_api.cpp");
        EXPECT_TRUE(line.function == "svc_pvr_service_init" || line.function == "_get_pid_name" ||
                    line.function == "_is_support_pvr")
            << line.function;
    }
}

TEST(ServiceInit, KeepsTheSessionThatThereIs)
{
    svc_pvr_service_init();
    logged();
    EXPECT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    EXPECT_EQ(logged_lines(),
              joined({start_lines,
                      {info("  [already g_pvr_proxy: PTR] "),
                       detail("g_pvr_proxy initilize success, PROJECT_MODEL[emulator]."), catalogue_line(true)}}));
}

TEST(ServiceInit, RefusesAProductThatDoesNotRecord)
{
    set_product(Product::does_not_record);
    EXPECT_EQ(svc_pvr_service_init(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines(), joined({identity_lines,
                                      start_lines,
                                      {creation_lines.begin(), creation_lines.begin() + 2},
                                      {detail(support_line(0)), plain_info(support_line(0)),
                                       exception(" _is_support_pvr: PS_CALL_METHOD_FAILED")}}));
}

TEST(ServiceInit, TakesAProductThatCannotBeAskedForOneThatRecords)
{
    set_product(Product::cannot_be_asked);
    EXPECT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    EXPECT_EQ(logged_lines(), joined({identity_lines,
                                      start_lines,
                                      {creation_lines.begin(), creation_lines.begin() + 2},
                                      {detail(support_line(0)), plain_info("system_info_get_custom_bool failure"),
                                       creation_lines.back()},
                                      success_lines}));
}

TEST(ServiceInit, FailsWithoutABusAndSucceedsOnceThereIsOne)
{
    bus().kill();
    EXPECT_EQ(svc_pvr_service_init(), PS_NO_PROXY);
    Lines lines = logged_lines();
    const std::string reason = ": Connection refused";
    ASSERT_EQ(lines.size(), 11U);
    EXPECT_EQ(lines[8].substr(0, 60), exception("  [g_pvr_proxy: (nil)][error:Could not connect").substr(0, 60));
    EXPECT_EQ(lines[8].substr(lines[8].size() - reason.size() - 2), reason + "] ");
    EXPECT_EQ(lines[9], info("  [new g_pvr_proxy: (nil)] "));
    EXPECT_EQ(lines[10].find(exception(" Error creating proxy: Could not connect")), 0U) << lines[10];

    EXPECT_EQ(svc_pvr_play_start(1, "", 0), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), failure(" g_pvr_proxy == NULL!!"));

    bus().start();
    EXPECT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
}

TEST(FirstCall, MakesTheSessionItself)
{
    ScriptedService service;
    service.script("play_start", answers("(1,)"));
    EXPECT_EQ(svc_pvr_play_start(1, "/m/a.srf", 2), PS_SUCCESS);
    EXPECT_EQ(service.requests(), std::vector{request("play_start", "isi", "(1, '/m/a.srf', 2)")});
    EXPECT_EQ(logged_lines(),
              joined({{plain_entry("My master:[0][] someione[handle:1][uri:/m/a.srf][start_pos:2]"),
                       detail(support_line(1)), plain_info("My master:[0][] dbus_threads_init_default() is called")},
                      identity_lines,
                      start_lines,
                      creation_lines,
                      success_lines,
                      {info(" g_pvr_proxy == PTR!!")}}));
}

TEST(ServiceDestroy, EndsTheSession)
{
    svc_pvr_service_init();
    logged();
    EXPECT_EQ(svc_pvr_service_destroy(), PS_SUCCESS);
    EXPECT_EQ(logged_lines(), (Lines{detail(support_line(1)), info("[g_pvr_proxy:PTR]")}));
    svc_pvr_service_init();
    EXPECT_EQ(logged_lines()[6], info("  [new g_pvr_proxy: PTR] "));
}

TEST(ServiceDestroy, SucceedsWithoutASession)
{
    EXPECT_EQ(svc_pvr_service_destroy(), PS_SUCCESS);
    EXPECT_EQ(logged_lines(), (Lines{detail(support_line(1)), plain_info("My master:[0][][g_pvr_proxy:(nil)]")}));
}

TEST(ServiceDestroy, LeavesTheSessionOnAProductThatDoesNotRecord)
{
    svc_pvr_service_init();
    set_product(Product::does_not_record);
    logged();
    EXPECT_EQ(svc_pvr_service_destroy(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines(),
              (Lines{detail(support_line(0)), plain_info(support_line(0)), info(" did not support PVR!!")}));
    set_product(Product::records);
    svc_pvr_service_init();
    EXPECT_EQ(logged_lines()[2], info("  [already g_pvr_proxy: PTR] "));
}

TEST(SupportCheck, AsksThePlatformOnEveryCall)
{
    ScriptedService service;
    service.script("play_start", answers("(1,)"));
    svc_pvr_service_init();
    const int before = support_questions();
    for (int i = 0; i < 3; ++i)
        svc_pvr_play_start(1, "", 0);
    EXPECT_EQ(support_questions(), before + 3);
}

TEST(Library, StaysLoaded)
{
    Dl_info info{};
    ASSERT_NE(dladdr(reinterpret_cast<void *>(&svc_pvr_service_init), &info), 0);
    void *handle = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(handle, nullptr);
    for (int i = 0; i < 4; ++i)
        dlclose(handle);
    EXPECT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
}

TEST(ServiceInit, IsBoundedWhenTheServiceIsSilent)
{
    // A silent service costs the first call two time-outs at most; the test's own time-out tells.
    ScriptedService service;
    service.script("play_start", stays_silent());
    EXPECT_EQ(svc_pvr_play_start(1, "", 0), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), failure(" GDBus error: Timeout was reached!!"));
    service.script("play_start", answers("(1,)"));
    EXPECT_EQ(svc_pvr_play_start(1, "", 0), PS_SUCCESS);
}
