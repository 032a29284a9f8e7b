// What applications call: the same questions, with answers that never throw.
#include "ca_module.h"
#include "client/identity.h"
#include "pvr_service_api.h"
#include "support/log_capture.h"
#include "support/platform.h"

#include <functional>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <vector>

using namespace support;

namespace {

constexpr char path[] = "/m/a.srf";

/// An application's call; its outputs are all in one list, in order.
struct Row {
    const char *name;
    int (*call)(const char *path, std::vector<int> &out);
    int (*call_without_outputs)(const char *path);
    std::vector<int> answered;     ///< by a module that says 1 and has counted to 200
    std::vector<int> not_answered; ///< by one that neither answers nor writes
    bool returns_result;           ///< or else success always
    std::string entry;
    std::string line_answered;
    std::string line_not_answered;
};

const Row rows[] = {
    {"svc_pvr_is_thumbnail_valid",
     [](const char *about, std::vector<int> &out) { return svc_pvr_is_thumbnail_valid(about, -9, out.data()); },
     [](const char *about) { return svc_pvr_is_thumbnail_valid(about, -9, nullptr); },
     {1},
     {1},
     false,
     ", [file_name:/m/a.srf][position-9]",
     " [iResult:0] bResult[1]",
     " [iResult:7] bResult[1]"},
    {"svc_pvr_is_blocked_by_parental_control",
     [](const char *about, std::vector<int> &out) { return svc_pvr_is_blocked_by_parental_control(about, out.data()); },
     [](const char *about) { return svc_pvr_is_blocked_by_parental_control(about, nullptr); },
     {1},
     {1},
     true,
     " [file_name:/m/a.srf]",
     " [iResult:0] [bResult:1]",
     " [iResult:7] [bResult:1]"},
    {"svc_pvr_is_this_whole_file_exceeded_retention_limit",
     [](const char *about, std::vector<int> &out) {
         return svc_pvr_is_this_whole_file_exceeded_retention_limit(about, out.data());
     },
     [](const char *about) { return svc_pvr_is_this_whole_file_exceeded_retention_limit(about, nullptr); },
     {1},
     {1},
     true,
     " [file_name:/m/a.srf]",
     " [g_result:0] limit_file[1]",
     " [g_result:7] limit_file[1]"},
    {"svc_pvr_get_content_info",
     [](const char *about, std::vector<int> &out) {
         out.resize(3, untouched);
         return svc_pvr_get_content_info(about, &out[0], &out[1], &out[2]);
     },
     [](const char *about) { return svc_pvr_get_content_info(about, nullptr, nullptr, nullptr); },
     {1, 200, 1},
     {0, 0, 0},
     false,
     " [file_name:/m/a.srf]",
     " [g_result:0] play_count[200]",
     " [g_result:7] play_count[0]"},
    {"svc_pvr_get_ci_thumb_type",
     [](const char *about, std::vector<int> &out) {
         out.resize(2, untouched);
         return svc_pvr_get_ci_thumb_type(about, &out[0], &out[1]);
     },
     [](const char *about) { return svc_pvr_get_ci_thumb_type(about, nullptr, nullptr); },
     {1, 1},
     {0, 0},
     false,
     " [file_name:/m/a.srf]",
     " [g_result:0]",
     " [g_result:7]"},
};

std::ostream &operator<<(std::ostream &out, const Row &row) { return out << row.name; }

class ViewingRights : public testing::Test {
protected:
    void SetUp() override
    {
        pvr::_get_pid_name();
        reset_module();
        module.value = 1;
        logged();
    }

    /// The lines of the application's call itself.
    static Lines own_lines()
    {
        Lines lines;
        for (const LoggedLine &line : logged())
            if (line.file == "pvr_service_api.cpp")
                lines.push_back(std::to_string(line.priority) + " " + line.text);
        return lines;
    }
};

class EachRight : public ViewingRights, public testing::WithParamInterface<Row> {};

} // namespace

TEST_P(EachRight, IsHandedOut)
{
    const Row &row = GetParam();
    std::vector<int> out{untouched};
    EXPECT_EQ(row.call(path, out), 0);
    EXPECT_EQ(out, row.answered);
    EXPECT_EQ(module.path, path);
    EXPECT_EQ(own_lines(), (Lines{entry(row.entry), entry(row.line_answered)}));
}

TEST_P(EachRight, IsNotAnsweredByNobody)
{
    const Row &row = GetParam();
    const std::function<void()> ways[] = {
        [] { module.is_fitted = false; },
        [] { module.is_answering = module.is_writing = false; },
        [] { module.is_throwing = true; },
    };
    for (const auto &make : ways) {
        reset_module();
        make();
        std::vector<int> out{untouched};
        logged();
        EXPECT_EQ(row.call(path, out), row.returns_result ? PVR_CA_NO_ANSWER : 0);
        EXPECT_EQ(out, row.not_answered);
        EXPECT_EQ(own_lines(), (Lines{entry(row.entry), entry(row.line_not_answered)}));
    }
}

TEST_P(EachRight, NeedsAPathAndNoOutputs)
{
    const Row &row = GetParam();
    for (const char *about : {"", static_cast<const char *>(nullptr)}) {
        std::vector<int> out{untouched};
        EXPECT_EQ(row.call(about, out), row.returns_result ? PVR_CA_BAD_ARGUMENT : 0);
        EXPECT_EQ(out, row.not_answered);
    }
    EXPECT_EQ(row.call_without_outputs(path), 0);
    EXPECT_EQ(module.path, path) << "it was asked all the same";
}

TEST_P(EachRight, DoesNotAskWhetherTheProductRecords)
{
    set_product(Product::does_not_record);
    std::vector<int> out{untouched};
    EXPECT_EQ(GetParam().call(path, out), 0);
    EXPECT_EQ(out, GetParam().answered);
}

INSTANTIATE_TEST_SUITE_P(All, EachRight, testing::ValuesIn(rows),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(ViewingRights, ListNoExpiredSections)
{
    module.sections = {{60, 120}, {300, 360}};
    expired_content_section sections[100];
    sections[0] = {untouched, untouched};
    int count = untouched;
    int success = untouched;
    EXPECT_EQ(svc_pvr_get_expired_content_sections(path, sections, &count, &success), 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(success, 1);
    EXPECT_EQ(sections[0].start_time, untouched);
    EXPECT_EQ(own_lines(),
              (Lines{entry(" [file_name:/m/a.srf]"), detail(support_line(1)), entry(" [iResult:0] iCount[0]")}));
}

TEST_F(ViewingRights, SayWhenNobodyListsExpiredSections)
{
    const std::function<void()> ways[] = {
        [] { module.is_fitted = false; },
        [] { module.is_answering = false; },
        [] { module.is_throwing = true; },
    };
    for (const auto &make : ways) {
        reset_module();
        make();
        expired_content_section sections[1];
        int count = untouched;
        int success = untouched;
        EXPECT_EQ(svc_pvr_get_expired_content_sections(path, sections, &count, &success), PVR_CA_NO_ANSWER);
        EXPECT_EQ(count, untouched);
        EXPECT_EQ(success, 0);
        EXPECT_EQ(logged_lines().back(), entry(" [iResult:7] iCount[0]"));
        EXPECT_EQ(svc_pvr_get_expired_content_sections(nullptr, sections, &count, &success), PVR_CA_BAD_ARGUMENT);
    }
}

TEST_F(ViewingRights, NeedRoomForExpiredSections)
{
    expired_content_section sections[1];
    int count = untouched;
    int success = untouched;
    const int returned[] = {svc_pvr_get_expired_content_sections(path, nullptr, &count, &success),
                            svc_pvr_get_expired_content_sections(path, sections, nullptr, &success),
                            svc_pvr_get_expired_content_sections(path, sections, &count, nullptr)};
    for (const int code : returned)
        EXPECT_EQ(code, PS_CALL_METHOD_FAILED);
    EXPECT_EQ(count, untouched);
    EXPECT_EQ(success, untouched);
    EXPECT_EQ(module.slot, -1);
    EXPECT_EQ(logged_lines().back(),
              plain_entry("expired_content_sections == NULL! please malloc mamory before call this funtion."));
    set_product(Product::does_not_record);
    EXPECT_EQ(svc_pvr_get_expired_content_sections(path, sections, &count, &success), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), info(" did not support PVR!!"));
    EXPECT_EQ(get_size_of_expired_content_section(), sizeof(expired_content_section));
}
