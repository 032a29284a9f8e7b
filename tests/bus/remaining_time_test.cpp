// The time that is left for recordings, which the library works out of what the service says of a device.
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/platform.h"
#include "support/scripted_service.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace support;

namespace {

/// What the default device has free, in MiB, and the seconds that this is worth.
struct Remaining {
    const char *available;
    int of_type_one;
    int of_other_types;
};

class RemainingTime : public testing::TestWithParam<Remaining> {};

int remaining_time(int type)
{
    int remaining = -77;
    EXPECT_EQ(svc_pvr_get_remaining_time(type, &remaining), PS_SUCCESS);
    return remaining;
}

} // namespace

TEST_P(RemainingTime, IsWorkedOutFromTheDefaultDevicesFreeSpace)
{
    ScriptedService service;
    service.script("get_default_rec_device", answers("(5, 0)"));
    service.script("get_device_info",
                   answers("((1, 0, 'd', 'p', '/m', int64 0, int64 " + std::string(GetParam().available) + "), 0)"));
    EXPECT_EQ(remaining_time(1), GetParam().of_type_one);
    EXPECT_EQ(remaining_time(0), GetParam().of_other_types);
    EXPECT_EQ(remaining_time(2), GetParam().of_other_types);
    EXPECT_EQ(remaining_time(-1), GetParam().of_other_types);
    const auto requests = service.requests();
    ASSERT_EQ(requests.size(), 8U);
    EXPECT_EQ(requests[0], request("get_default_rec_device", "", "()"));
    EXPECT_EQ(requests[1], request("get_device_info", "i", "(5,)"));
}

INSTANTIATE_TEST_SUITE_P(All, RemainingTime,
                         testing::Values(Remaining{"0", 0, 0}, Remaining{"5", 4, 2}, Remaining{"1000", 800, 400},
                                         Remaining{"-5", -4, -2},
                                         // the seconds are cut to 32 bits, the bytes to 64
                                         Remaining{"5368709120", 0, -2147483648}, Remaining{"17592186044416", 0, 0},
                                         Remaining{"17592186044421", 4, 2}),
                         [](const auto &info) { return "Space" + std::to_string(info.index); });

TEST(RemainingTimeOfAProductThatDoesNotRecord, IsNotTold)
{
    ScriptedService service;
    set_product(Product::does_not_record);
    int remaining = -77;
    EXPECT_EQ(svc_pvr_get_remaining_time(1, &remaining), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().front(), plain_entry("My master:[0][][type:1]"));
    EXPECT_EQ(remaining, -77);
    EXPECT_EQ(service.requests(), std::vector<Request>());
}

TEST(RemainingTimeWithoutADevice, IsZeroWhateverTheLookupsReturned)
{
    ScriptedService service;
    service.script("get_default_rec_device", fails("org.example.No", "no"));
    service.script("get_device_info", fails("org.example.No", "no"));
    EXPECT_EQ(remaining_time(1), 0);
    const auto requests = service.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[1], request("get_device_info", "i", "(-1,)"));
    EXPECT_EQ(svc_pvr_get_remaining_time(1, nullptr), PS_SUCCESS);
}
