#include "client/session.h"

#include <cstdint>
#include <gtest/gtest.h>

TEST(MutexAddress, IsCorruptUpToTwo)
{
    for (const std::uintptr_t address : {0U, 1U, 2U})
        EXPECT_TRUE(pvr::is_corrupt_address(reinterpret_cast<void *>(address)));
    EXPECT_FALSE(pvr::is_corrupt_address(reinterpret_cast<void *>(std::uintptr_t{3})));
    EXPECT_FALSE(pvr::is_corrupt_address(&pvr::g_mutex_get_info));
    EXPECT_FALSE(pvr::is_corrupt_address(reinterpret_cast<void *>(UINTPTR_MAX)));
}
