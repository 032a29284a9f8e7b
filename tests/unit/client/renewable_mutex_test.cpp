#include "client/renewable_mutex.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

using pvr::RenewableMutex;

TEST(RenewableMutex, ExcludesWhileItIsRenewedAgainAndAgain)
{
    RenewableMutex mutex;
    constexpr int rounds = 20000;
    int count = 0; // a lost exclusion loses counts, and is a race that the sanitizer sees
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                const std::lock_guard lock(mutex);
                ++count;
            }
        });
    for (int round = 0; round < rounds; ++round)
        EXPECT_EQ(mutex.renew(), 0);
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(count, 4 * rounds);
}

TEST(RenewableMutex, IsLeftAloneWhileSomebodyHoldsIt)
{
    RenewableMutex mutex;
    mutex.lock();
    EXPECT_EQ(mutex.renew(), 0); // by the holder
    std::thread([&] { EXPECT_EQ(mutex.renew(), 0); }).join();
    mutex.unlock();
    mutex.lock(); // a renewal under the hold would have left it in any state
    mutex.unlock();
}

TEST(RenewableMutex, MayBeRenewedAndLockedByWhoHoldsItsGuard)
{
    RenewableMutex mutex;
    const std::lock_guard alone(mutex.guard());
    EXPECT_EQ(mutex.renew(), 0);
    const std::lock_guard lock(mutex);
}
