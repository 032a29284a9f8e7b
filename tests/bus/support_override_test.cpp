// The file that forces the product's support, for the whole machine.
#include "pvr_service_api.h"
#include "support/platform.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace support;

namespace {

constexpr char override_file[] = "/tmp/PVR_SERVICE_API_IS_SUPPORT_PVR";

/// There only as long as one of these lives.
struct OverrideFile {
    OverrideFile() { std::ofstream(override_file) << "0"; }
    ~OverrideFile() { unlink(override_file); }
};

} // namespace

TEST(SupportOverride, GoesBeforeThePlatformAndIsNeverRead)
{
    const OverrideFile file;
    set_product(Product::does_not_record);
    EXPECT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    EXPECT_EQ(support_questions(), 0);
    EXPECT_EQ(svc_pvr_service_destroy(), PS_SUCCESS);
}

TEST(SupportOverride, IsNeverMadeByTheLibrary)
{
    EXPECT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    EXPECT_FALSE(std::filesystem::exists(override_file));
}
