// Records that a call fills: what becomes of none, and of texts as long as their room.
#include "bus/row_shapes.h"
#include "pvr_service_api.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace support;

namespace {

/// The first row of a function.
const RemoteCall &row_of(const std::string &name)
{
    return *std::find_if(all_calls().begin(), all_calls().end(),
                         [&](const RemoteCall &row) { return row.name == name; });
}

struct NullRecordCall {
    std::string name;
    int (*call)();
    std::string line;
};

class NullRecord : public testing::TestWithParam<NullRecordCall> {};

} // namespace

TEST_P(NullRecord, IsRefusedOnceTheServiceHasAnswered)
{
    const RemoteCall &row = row_of(GetParam().name);
    ScriptedService service;
    service.script(row.request.method, answers(row.outcomes.front().answer));
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    logged();
    EXPECT_EQ(GetParam().call(), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(service.requests(), std::vector{row.request});
    EXPECT_EQ(logged_lines().back(), plain_entry(GetParam().line));
}

INSTANTIATE_TEST_SUITE_P(
    All, NullRecord,
    testing::Values(NullRecordCall{"svc_pvr_get_channel_info",
                                   [] { return svc_pvr_get_channel_info(wide_id, nullptr); },
                                   "[return PS_CALL_METHOD_FAILED]"},
                    NullRecordCall{"svc_pvr_get_device_info", [] { return svc_pvr_get_device_info(9, nullptr); },
                                   "[PS_CALL_METHOD_FAILED][info == NULL]"},
                    NullRecordCall{"svc_pvr_get_recording_info", [] { return svc_pvr_get_recording_info(7, nullptr); },
                                   "[PS_CALL_METHOD_FAILED][info == NULL]"}),
    [](const auto &info) { return info.param.name; });

TEST(ChannelInfo, HasNoTerminatorInTextsAsLongAsTheirRoom)
{
    ScriptedService service;
    service.script("get_channel_info", answers(row_of("svc_pvr_get_channel_info").outcomes[2].answer));
    const std::string as_much_as_fits(254, 'c');
    channel_info info;
    std::memset(&info, '#', sizeof info);
    ASSERT_EQ(svc_pvr_get_channel_info(1, &info), PS_SUCCESS);
    EXPECT_EQ(text_of(info.channel_name, sizeof info.channel_name), as_much_as_fits + "#");
    EXPECT_EQ(text_of(info.program_title, sizeof info.program_title), as_much_as_fits + "#");
}
