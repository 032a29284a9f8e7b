// Whether the service supports recording: asked until it has answered, and remembered.
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/scripted_service.h"

#include <gtest/gtest.h>
#include <vector>

using namespace support;

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
