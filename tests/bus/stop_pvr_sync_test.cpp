// The one request that nobody waits for.
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/platform.h"
#include "support/private_bus.h"
#include "support/scripted_service.h"

#include <gtest/gtest.h>

using namespace support;

namespace {

constexpr std::uint64_t service_id = 0x8000000000000001;

const std::string entry_line = entry("[service_id:9223372036854775809][called_app:org.example.guide]");

int stop() { return svc_pvr_stop_pvr_sync(service_id, "org.example.guide"); }

} // namespace

TEST(StopPvrSync, SendsARequestThatExpectsNoReply)
{
    ScriptedService service;
    service.script("sync_stop_pvr", answers("(0,)"));
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    logged();
    EXPECT_EQ(stop(), PS_SUCCESS);
    EXPECT_EQ(logged_lines(), (Lines{entry_line, detail(support_line(1))}));
    service.wait_for_request();
    Request expected = request("sync_stop_pvr", "ts", "(uint64 9223372036854775809, 'org.example.guide')");
    expected.is_reply_expected = false;
    EXPECT_EQ(service.requests(), std::vector{expected});
}

TEST(StopPvrSync, DoesNotWaitForASilentService)
{
    ScriptedService service;
    service.script("sync_stop_pvr", stays_silent());
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    for (int i = 0; i < 1000; ++i) // 1000 time-outs would not fit into the test's own
        ASSERT_EQ(stop(), PS_SUCCESS);
}

TEST(StopPvrSync, SucceedsWithoutAServiceAndFailsWithoutABus)
{
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    EXPECT_EQ(stop(), PS_SUCCESS);
    bus().kill();
    while (svc_pvr_play_start(1, "", 0) == PS_SUCCESS || svc_pvr_service_init() == PS_SESSION_READY)
        ; // until GDBus has noticed as well
    EXPECT_EQ(stop(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), failure(" g_pvr_proxy == NULL!!"));
    bus().start();
    EXPECT_EQ(stop(), PS_SUCCESS);
}

TEST(StopPvrSync, IsNotSentOverAClosedConnection)
{
    ScriptedService service;
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    bus().kill();
    bus().start();
    service.vanish();
    service.come_back();
    // Sent until GDBus has noticed; then refused once, after which a new session carries it.
    int answer = PS_SUCCESS;
    while ((answer = stop()) == PS_SUCCESS && service.requests().empty())
        ;
    if (answer != PS_SUCCESS) {
        EXPECT_EQ(logged_lines().back(), failure(" GDBus error: The connection is closed!!"));
        EXPECT_EQ(stop(), PS_SUCCESS);
        service.wait_for_request();
    }
    EXPECT_EQ(answer, PS_CALL_METHOD_FAILED);
}

TEST(StopPvrSync, IsNotSentOnAProductThatDoesNotRecord)
{
    ScriptedService service;
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    set_product(Product::does_not_record);
    EXPECT_EQ(stop(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), info(" did not support PVR!!"));
    EXPECT_EQ(service.requests(), std::vector<Request>());
}
