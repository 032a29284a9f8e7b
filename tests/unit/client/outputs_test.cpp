#include "client/outputs.h"

#include "support/log_capture.h"

#include <array>
#include <gtest/gtest.h>
#include <numeric>
#include <string>
#include <vector>

using namespace pvr;

namespace {

OwnedVariant numbers(const std::vector<gint32> &values)
{
    return OwnedVariant(g_variant_ref_sink(
        g_variant_new_fixed_array(G_VARIANT_TYPE_INT32, values.data(), values.size(), sizeof(gint32))));
}

} // namespace

TEST(CopyBytes, TakesAtMostItsLimitAndAddsNoTerminator)
{
    char buffer[8] = "#######";
    EXPECT_EQ(copy_bytes(buffer, "abcdef", 3), 3U);
    EXPECT_STREQ(buffer, "abc####");
    EXPECT_EQ(copy_bytes(buffer, "", 3), 0U);
    EXPECT_EQ(copy_bytes(buffer, "xy", 3), 2U);
    EXPECT_STREQ(buffer, "xyc####");
}

TEST(CopyField, AlwaysEndsInANul)
{
    char field[4];
    copy_field(field, "abcdef");
    EXPECT_STREQ(field, "abc");
    copy_field(field, "abc");
    EXPECT_STREQ(field, "abc");
    copy_field(field, "");
    EXPECT_STREQ(field, "");
}

TEST(StoreList, StoresWhatThereIsRoomFor)
{
    std::vector<gint32> many(10000);
    std::iota(many.begin(), many.end(), 0);
    std::vector<int> list(10000, -1);
    store_list(Here(), numbers(many), 10000, list.data(), 9999);
    EXPECT_EQ(list[9998], 9998);
    EXPECT_EQ(list[9999], -1);
    store_list(Here(), numbers(many), 10000, list.data(), 10001);
    EXPECT_EQ(list, many);
}

TEST(StoreList, TakesAMissingArrayForAnEmptyOne)
{
    std::array<int, 1> list{-1};
    store_list(Here(), OwnedVariant(), 5, list.data(), 1);
    EXPECT_EQ(list[0], -1);
}

TEST(StoreList, KeepsWideNumbers)
{
    const std::vector<guint64> ids{0xfedcba9876543210};
    const OwnedVariant array(
        g_variant_ref_sink(g_variant_new_fixed_array(G_VARIANT_TYPE_UINT64, ids.data(), ids.size(), sizeof(guint64))));
    std::array<std::uint64_t, 1> list{};
    support::logged();
    store_list(Here(), array, 1, list.data(), 1);
    EXPECT_EQ(list[0], ids[0]);
    EXPECT_EQ(support::logged_lines(), support::Lines{support::plain_info("index[0] value[18364758544493064720]")});
}

TEST(Owned, ReleasesWhatItHeldBeforeTheNextIsStored)
{
    OwnedText text(g_strdup("first"));
    *text.slot() = g_strdup("second"); // a leak of the first is the sanitizer's to find
    EXPECT_STREQ(text.get(), "second");
    OwnedText moved(std::move(text));
    EXPECT_STREQ(moved.get(), "second");
    g_free(moved.release());
    EXPECT_FALSE(moved);
}
