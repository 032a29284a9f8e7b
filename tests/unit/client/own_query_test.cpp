// A product that answers a question about viewing rights by a function of its own.
#include "client/identity.h"
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/platform.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <string>

using namespace support;

namespace {

constexpr int untouched = -77;
constexpr int writes_nothing = -1000; // as a count

/// The product's answer, while there is one.
struct Answer {
    int count;
    int result;
};
std::optional<Answer> own;

} // namespace

extern "C" {

int __real_GetExpiredContentSections(const char *path, int *count, int *starts, int *ends);

int __wrap_GetExpiredContentSections(const char *path, int *count, int *starts, int *ends)
{
    if (!own)
        return __real_GetExpiredContentSections(path, count, starts, ends);
    if (own->count == writes_nothing)
        return own->result;
    *count = own->count;
    for (int i = 0; i < std::min(own->count, 100); ++i) { // every caller has room for as many
        starts[i] = 10 * i;
        ends[i] = 10 * i + 5;
    }
    return own->result;
}
}

namespace {

struct Told {
    const char *name;
    int count;
    int stored;
};

class OwnQuery : public testing::Test {
protected:
    OwnQuery()
    {
        set_product(Product::records);
        pvr::_get_pid_name();
    }
    ~OwnQuery() override { own.reset(); }
};

class OwnSections : public OwnQuery, public testing::WithParamInterface<Told> {};

} // namespace

TEST_P(OwnSections, AreStoredAsFarAsThereIsRoom)
{
    own = {GetParam().count, PVR_CA_SUCCESS};
    expired_content_section sections[101];
    for (expired_content_section &section : sections)
        section = {untouched, untouched};
    int count = untouched;
    int success = untouched;
    EXPECT_EQ(svc_pvr_get_expired_content_sections("/m/a.srf", sections, &count, &success), PVR_CA_SUCCESS);
    EXPECT_EQ(count, GetParam().stored);
    EXPECT_EQ(success, 1);
    for (int i = 0; i <= 100; ++i) {
        EXPECT_EQ(sections[i].start_time, i < GetParam().stored ? 10 * i : untouched) << i;
        EXPECT_EQ(sections[i].end_time, i < GetParam().stored ? 10 * i + 5 : untouched) << i;
    }
    EXPECT_EQ(logged_lines().back(), entry(" [iResult:0] iCount[" + std::to_string(count) + "]"));
}

INSTANTIATE_TEST_SUITE_P(All, OwnSections,
                         testing::Values(Told{"None", 0, 0}, Told{"Two", 2, 2},
                                         Told{"AsManyAsThereIsRoomFor", 100, 100}, Told{"More", 101, 100},
                                         Told{"LessThanNone", -3, 0}, Told{"NoWordAboutThem", writes_nothing, 0}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(OwnQuery, LeavesTheSectionsAloneWhenItFails)
{
    own = {2, PVR_CA_NO_ANSWER};
    expired_content_section section{untouched, untouched};
    int count = untouched;
    int success = untouched;
    EXPECT_EQ(svc_pvr_get_expired_content_sections("/m/a.srf", &section, &count, &success), PVR_CA_NO_ANSWER);
    EXPECT_EQ(count, untouched);
    EXPECT_EQ(success, 0);
    EXPECT_EQ(section.start_time, untouched);
}
