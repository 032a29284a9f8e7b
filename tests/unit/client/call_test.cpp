#include "client/call.h"

#include <gtest/gtest.h>
#include <limits>

using namespace pvr;

static_assert(judged(Success::is_one, 1) == PS_SUCCESS);

TEST(Judged, ReadsEachResultByItsRule)
{
    struct Row {
        int result;
        int is_one;
        int is_zero;
        int is_not_negative;
    };
    constexpr int yes = PS_SUCCESS;
    constexpr int no = PS_CALL_METHOD_FAILED;
    constexpr Row rows[] = {
        {std::numeric_limits<int>::min(), no, no, no},
        {-2, no, no, no},
        {-1, no, no, no},
        {0, no, yes, yes},
        {1, yes, no, yes},
        {2, no, no, yes},
        {std::numeric_limits<int>::max(), no, no, yes},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(judged(Success::is_one, row.result), row.is_one) << row.result;
        EXPECT_EQ(judged(Success::is_zero, row.result), row.is_zero) << row.result;
        EXPECT_EQ(judged(Success::is_not_negative, row.result), row.is_not_negative) << row.result;
    }
}

TEST(Answer, JudgesWhatWasDelivered)
{
    const auto delivered = [](int result) { return Answer<true>(Here(), true, result); };
    EXPECT_EQ(delivered(-7).transport_rule(), PS_SUCCESS);
    EXPECT_EQ(delivered(1).one_is_success_rule(), PS_SUCCESS);
    EXPECT_EQ(delivered(0).one_is_success_rule(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(delivered(0).zero_rule(), PS_SUCCESS);
    EXPECT_EQ(delivered(1).zero_rule(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(delivered(403).sign_rule(), PS_SUCCESS);
    EXPECT_EQ(delivered(-1).sign_rule(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(delivered(-9).pass_through_rule(), -9);
    EXPECT_EQ(delivered(0).value_rule(42), 42);
    int out = 5;
    EXPECT_EQ(delivered(3).result_out_rule(&out), PS_SUCCESS);
    EXPECT_EQ(out, 3);
    EXPECT_EQ(delivered(3).result_out_rule(nullptr), PS_SUCCESS);
}

TEST(Answer, FailsByEveryRuleWhenNothingWasDelivered)
{
    const Answer<true> lost(Here(), false, 1);
    EXPECT_FALSE(lost);
    EXPECT_EQ(lost.transport_rule(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(lost.one_is_success_rule(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(Answer<true>(Here(), false, 0).zero_rule(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(lost.sign_rule(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(lost.pass_through_rule(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(lost.value_rule(42), PS_CALL_METHOD_FAILED);
    int out = 5;
    EXPECT_EQ(lost.result_out_rule(&out), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(out, 5);
}

TEST(Answer, PublishesAResultOnlyOnceItWasDelivered)
{
    g_result = -1;
    static_cast<void>(Answer<true>(Here(), false, 7));
    EXPECT_EQ(g_result, -1);
    static_cast<void>(Answer<false>(Here(), true, 7));
    EXPECT_EQ(g_result, -1);
    static_cast<void>(Answer<true>(Here(), true, 7));
    EXPECT_EQ(g_result, 7);
}
