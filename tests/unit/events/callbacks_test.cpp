#include "events/callbacks.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

using namespace pvr;

namespace {

char data_of_one, data_of_other;

void one(pvr_service_signal, void *) {}
void other(pvr_service_signal, void *) {}

bool is_a_pair(const Registration<pvr_signal_cb> &seen)
{
    return (seen.function == nullptr && seen.user_data == nullptr) ||
           (seen.function == one && seen.user_data == &data_of_one) ||
           (seen.function == other && seen.user_data == &data_of_other);
}

/// Reads while the writer goes through its rounds; the number of torn pairs.
template <typename Read, typename Write>
int torn_pairs(int rounds, Read read, Write write)
{
    std::atomic<bool> is_writing{true};
    std::thread writer([&] {
        for (int i = 0; i < rounds; ++i)
            write();
        is_writing = false;
    });
    int torn = 0;
    while (is_writing)
        torn += is_a_pair(read()) ? 0 : 1;
    writer.join();
    return torn;
}

} // namespace

TEST(Callbacks, OfASlotAreReadWithTheirOwnData)
{
    Slot<pvr_signal_cb> slot;
    EXPECT_EQ(torn_pairs(
                  100'000, [&] { return slot.get(); },
                  [&] {
                      slot.set(one, &data_of_one);
                      slot.set(other, &data_of_other);
                      slot.clear_if(other);
                  }),
              0);
}

TEST(Callbacks, OfTheListAreReadWithTheirOwnData)
{
    EXPECT_EQ(torn_pairs(
                  3'000, [] { return listed_signal_cb(0); },
                  [] {
                      svc_pvr_register_signal_cb_in_list(one, &data_of_one);
                      svc_pvr_unregister_signal_cb_in_list(one);
                      svc_pvr_register_signal_cb_in_list(other, &data_of_other);
                      svc_pvr_unregister_signal_cb_in_list(other);
                  }),
              0);
}
