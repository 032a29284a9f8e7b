#include "client/log.h"

#include "support/log_capture.h"

#include <gtest/gtest.h>

using namespace support;

TEST(LogLine, HasThePriorityAndTheHeadOfItsShape)
{
    const std::string master = "My master:[0][]"; // before the identity was captured
    const pvr::Here here("elsewhere", 7);
    ENTRY(" %d\n", 1);
    ENTRY_AT(here, " %d\n", 2);
    FAILURE(" %d\n", 3);
    FAILURE_AT(here, " %d\n", 4);
    EXCEPTION(" %d\n", 5);
    INFO(" %d\n", 6);
    INFO_AT(here, " %d\n", 7);
    PLAIN_ENTRY("%d\n", 8);
    PLAIN_FAILURE("%d\n", 9);
    PLAIN_FAILURE_AT(here, "%d\n", 10);
    PLAIN_INFO("%d\n", 11);
    PLAIN_INFO_AT(here, "%d\n", 12);
    DETAIL("%d\n", 13);
    EXPECT_EQ(logged_lines(), (Lines{
                                  "6 [PVR][API][EST][10.8.1]" + master + " 1",
                                  "6 [PVR][API][EST][10.8.1]" + master + " 2",
                                  "6 [PVR][API][EST][10.8.1]" + master + " 3",
                                  "6 [PVR][API][EST][10.8.1]" + master + " 4",
                                  "6 [PVR][API][EXP][10.8.1]" + master + " 5",
                                  "4 [PVR][API][10.8.1]" + master + " 6",
                                  "4 [PVR][API][10.8.1]" + master + " 7",
                                  "6 [PVR][API][EST][10.8.1]8",
                                  "6 [PVR][API][EST][10.8.1]9",
                                  "6 [PVR][API][EST][10.8.1]10",
                                  "4 [PVR][API][10.8.1]11",
                                  "4 [PVR][API][10.8.1]12",
                                  "3 [PVR][API][10.8.1]13",
                              }));
    EXPECT_EQ(malformed_lines(), Lines());
}

TEST(LogLine, NamesWhereItStandsAndYieldsIt)
{
    const pvr::Here here = INFO("\n");
    const int line = __LINE__ - 1;
    EXPECT_STREQ(here.function, "TestBody");
    EXPECT_EQ(here.line, line);
    FAILURE_AT(pvr::Here("elsewhere", 7), "\n");
    const auto lines = logged();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].function, "TestBody");
    EXPECT_EQ(lines[1].function, "elsewhere");
    for (const LoggedLine &logged_line : lines) {
        EXPECT_EQ(logged_line.tag, "PVR_SVC_API");
        EXPECT_EQ(logged_line.log_id, 0);
        EXPECT_EQ(logged_line.file, "pvr_service_api.cpp");
    }
}

TEST(LogLine, ForwardsItsArgumentsUntouched)
{
    const char *nothing = nullptr;
    INFO(" [%s][%s][%llu][%p][%c]\n", "%n", nothing, 18446744073709551615ULL, static_cast<void *>(nullptr), 'x');
    EXPECT_EQ(logged().front().text, "[PVR][API][10.8.1]My master:[0][] [%n][(null)][18446744073709551615][(nil)][x]");
}
