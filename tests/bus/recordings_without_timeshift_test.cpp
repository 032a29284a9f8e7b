// The list of recordings of which the library leaves out what a timeshift records, asking about one after the other.
#include "bus/row_shapes.h"
#include "pvr_service_api.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace support;

namespace {

/// Channels as the service lists them, and how many of them the walk stores and asks about.
struct Walk {
    const char *name;
    int length;
    std::vector<std::uint64_t> recording; ///< of the three ids 1, 2 and wide_id, those that are recorded
    std::vector<std::uint64_t> stored;
    int asked;
};

class RecordingsWithoutTimeshift : public testing::TestWithParam<Walk> {};

const std::vector<std::uint64_t> listed{1, 2, wide_id};

} // namespace

TEST_P(RecordingsWithoutTimeshift, AreListedUpToTheFirstTimeshift)
{
    const Walk &walk = GetParam();
    ScriptedService service;
    service.script("get_recording_service_id_list", answers("(@at [1, 2, " + wide_id_text + "], 3)"));
    for (const std::uint64_t id : listed) {
        const bool is_recorded = std::find(walk.recording.begin(), walk.recording.end(), id) != walk.recording.end();
        service.script("is_recording", "(uint64 " + std::to_string(id) + ",)", answers(is_recorded ? "(1,)" : "(0,)"));
    }
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    logged();
    std::vector<std::uint64_t> stored(5, 77);
    int count = -77;
    EXPECT_EQ(svc_pvr_get_recording_no_ts_service_id_list(stored.data(), walk.length, &count), PS_SUCCESS);
    EXPECT_EQ(count, static_cast<int>(walk.stored.size()));
    for (std::size_t i = 0; i < stored.size(); ++i)
        EXPECT_EQ(stored[i], i < walk.stored.size() ? walk.stored[i] : 77);

    const auto requests = service.requests();
    ASSERT_EQ(static_cast<int>(requests.size()), 1 + walk.asked);
    Lines lines{entry("[length:" + std::to_string(walk.length) + "]"), detail(support_line(1)),
                detail("num_of_list : 3 ")};
    for (int i = 0; i < walk.asked; ++i) {
        const std::uint64_t id = listed[static_cast<std::size_t>(i)];
        EXPECT_EQ(requests[static_cast<std::size_t>(i) + 1],
                  request("is_recording", "t", "(uint64 " + std::to_string(id) + ",)"));
        lines.push_back(element_line(i, id));
        if (std::find(walk.recording.begin(), walk.recording.end(), id) == walk.recording.end())
            lines.push_back(info("[value:" + std::to_string(id) + " is TimeShift]"));
    }
    lines.push_back(plain_info("count:" + std::to_string(count) + " "));
    EXPECT_EQ(logged_lines(), lines);
    EXPECT_EQ(svc_pvr_get_recording_no_ts_service_id_list(nullptr, walk.length, &count), PS_SUCCESS);
    EXPECT_EQ(count, static_cast<int>(walk.stored.size()));
}

INSTANTIATE_TEST_SUITE_P(All, RecordingsWithoutTimeshift,
                         testing::Values(Walk{"AllRecorded", 5, {1, 2, wide_id}, {1, 2, wide_id}, 3},
                                         Walk{"JustEnoughRoom", 3, {1, 2, wide_id}, {1, 2, wide_id}, 3},
                                         // one more is asked about than stored
                                         Walk{"TooLittleRoom", 1, {1, 2, wide_id}, {1}, 2},
                                         Walk{"NoRoom", 0, {1, 2, wide_id}, {}, 1},
                                         Walk{"NegativeRoom", -1, {1, 2, wide_id}, {}, 1},
                                         // what stands behind a timeshift is not examined
                                         Walk{"TimeshiftInTheMiddle", 5, {1, wide_id}, {1}, 2},
                                         Walk{"TimeshiftFirst", 5, {}, {}, 1}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(RecordingsWithoutTimeshift, EndWhereTheServiceCannotBeAsked)
{
    ScriptedService service;
    service.script("get_recording_service_id_list", answers("(@at [1, 2], 2)"));
    service.script("is_recording", fails("org.example.No", "no"));
    std::uint64_t list[2] = {77, 77};
    int count = -77;
    EXPECT_EQ(svc_pvr_get_recording_no_ts_service_id_list(list, 2, &count), PS_SUCCESS);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(list[0], 77U);
    EXPECT_EQ(service.requests().size(), 2U);
}

TEST(RecordingsWithoutTimeshift, LeaveOutputsUntouchedWhenTheListCannotBeHad)
{
    ScriptedService service;
    service.script("get_recording_service_id_list", fails("org.example.No", "no"));
    std::uint64_t list[2] = {77, 77};
    int count = -77;
    EXPECT_EQ(svc_pvr_get_recording_no_ts_service_id_list(list, 2, &count), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(count, -77);
    EXPECT_EQ(list[0], 77U);
    for (const std::string empty : {"(@at [1, 2], 0)", "(@at [1, 2], -1)", "(@at [], 3)"}) {
        service.script("get_recording_service_id_list", answers(empty));
        EXPECT_EQ(svc_pvr_get_recording_no_ts_service_id_list(list, 2, &count), PS_SUCCESS) << empty;
        EXPECT_EQ(count, 0) << empty;
    }
    EXPECT_EQ(list[0], 77U);
}
