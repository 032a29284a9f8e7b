// The conditional-access queries against a conditional-access library of the test's own.
#include "pvr_service_api.h"
#include "support/log_capture.h"

#include <ca_service.h>
#include <gtest/gtest.h>
#include <map>
#include <stdexcept>
#include <string_view>
#include <system_info.h>

using namespace support;

namespace {

/// What the platform knows; a key that is missing cannot be read.
std::map<int, int> values;
std::map<std::string, int, std::less<>> custom_values;

class Rights final : public CA_API::CAService {
public:
    void Unused0() override { throw std::logic_error("slot 0"); }
    void Unused1() override { throw std::logic_error("slot 1"); }
    bool IsFileExceededRetentionLimit(std::string &, bool *) override { throw std::logic_error("slot 2"); }
    bool GetCIThumbType(std::string &, int *) override { throw std::logic_error("slot 3"); }
    bool GetContentInfo(std::string &, int *, unsigned char *) override { throw std::logic_error("slot 4"); }
    bool GetExpiredContentSections(std::string &, std::vector<std::pair<int, int>> &) override
    {
        throw std::logic_error("slot 5");
    }
    bool IsBlockedByParentalControl(std::string &path, bool *blocked) override
    {
        asked_for = path;
        if (is_throwing)
            throw std::runtime_error("the module was pulled");
        if (is_writing)
            *blocked = is_blocked;
        return is_answering;
    }
    bool CheckThumbnailValidation(std::string &, int *, bool *) override { throw std::logic_error("slot 7"); }

    std::string asked_for;
    bool is_throwing = false;
    bool is_writing = true;
    bool is_blocked = false;
    bool is_answering = true;
};

Rights rights;
bool is_fitted = true;

class ConditionalAccess : public testing::Test {
protected:
    void SetUp() override
    {
        rights = Rights();
        is_fitted = true;
        values = {{333, PVR_DTV_DVB_ISDB}};
        custom_values = {{"com.brimmel/featureconf/product.num_of_ci", 1}};
        logged();
    }
};

} // namespace

CA_API::CAService *CA_API::CAService::CAPVRInstance() { return is_fitted ? &rights : nullptr; }

int system_info_get_value_int(int key, int *value)
{
    const auto found = values.find(key);
    if (found == values.end())
        return -1;
    *value = found->second;
    return 0;
}

int system_info_get_custom_int(const char *key, int *value)
{
    const auto found = custom_values.find(std::string_view(key));
    if (found == custom_values.end())
        return -1;
    *value = found->second;
    return 0;
}

TEST_F(ConditionalAccess, KnowsTheBroadcastStandard)
{
    EXPECT_EQ(GetDtvType(), PVR_DTV_DVB_ISDB);
    EXPECT_EQ(logged_lines(), Lines());
    EXPECT_EQ(GetTVStandard(), PVR_DTV_DVB_ISDB);
    EXPECT_EQ(logged_lines(), Lines{plain_entry("[FAT]dtv type [2](0:atsc,1:dvb,2:dvbisdb)")});
    values.clear();
    EXPECT_EQ(GetTVStandard(), PVR_DTV_DVB);
    EXPECT_EQ(logged_lines(),
              (Lines{plain_entry("get dtv type failure"), plain_entry("[FAT]dtv type [1](0:atsc,1:dvb,2:dvbisdb)")}));
}

TEST_F(ConditionalAccess, CountsCiSlotsAnewOnEveryCall)
{
    const auto asked = [](int slots) {
        return plain_entry(
            "system_info_get_custom_int for com.brimmel/featureconf/product.num_of_ci is called, retValue[" +
            std::to_string(slots) + "]");
    };
    EXPECT_EQ(IsSupportCI(), 1);
    EXPECT_EQ(logged_lines(), (Lines{asked(1), plain_entry("support CI")}));
    for (const int slots : {0, -1}) {
        custom_values.begin()->second = slots;
        EXPECT_EQ(IsSupportCI(), 0);
        EXPECT_EQ(logged_lines(), (Lines{asked(slots), plain_entry("don't support CI")}));
    }
    custom_values.clear();
    EXPECT_EQ(IsSupportCI(), 0);
    EXPECT_EQ(logged_lines(), (Lines{asked(0), plain_entry("don't support CI")}));
}

TEST_F(ConditionalAccess, TellsWhetherARecordingIsBlocked)
{
    struct Row {
        bool is_answering;
        bool is_writing;
        bool is_blocked;
        int returned;
        int blocked;
        std::string line;
    };
    const Row rows[] = {
        {true, true, true, PVR_CA_SUCCESS, 1, "result[1] bResult[1]"},
        {true, true, false, PVR_CA_SUCCESS, 0, "result[1] bResult[0]"},
        {true, false, false, PVR_CA_SUCCESS, 1, "result[1] bResult[1]"},
        {false, false, false, PVR_CA_NO_ANSWER, 1, "result[0] bResult[1]"},
        {false, true, false, PVR_CA_NO_ANSWER, 0, "result[0] bResult[0]"},
    };
    for (const Row &row : rows) {
        rights.is_answering = row.is_answering;
        rights.is_writing = row.is_writing;
        rights.is_blocked = row.is_blocked;
        int blocked = -77;
        EXPECT_EQ(IsBlockedByParentalControl("/m/a.srf", &blocked), row.returned);
        EXPECT_EQ(blocked, row.blocked);
        EXPECT_EQ(rights.asked_for, "/m/a.srf");
        const auto lines = logged();
        ASSERT_EQ(lines.size(), 2U);
        EXPECT_EQ(lines[0].text, "[PVR][API][10.8.1]This func is called");
        EXPECT_EQ(lines[0].priority, 4);
        EXPECT_EQ(lines[1].text, "[PVR][API][EST][10.8.1]IsBlockedByParentalControl " + row.line);
        EXPECT_EQ(lines[1].priority, 6);
        EXPECT_EQ(lines[1].file, "pvr_cim_wrapper.cpp");
        EXPECT_EQ(lines[1].function, "IsBlockedByParentalControl");
    }
}

TEST_F(ConditionalAccess, TakesARecordingForBlockedWhenItCannotAsk)
{
    int blocked = -77;
    EXPECT_EQ(IsBlockedByParentalControl(nullptr, &blocked), PVR_CA_BAD_ARGUMENT);
    EXPECT_EQ(blocked, 1);
    EXPECT_EQ(logged_lines().back(), plain_entry("invalid buf pointer"));
    EXPECT_EQ(IsBlockedByParentalControl("/m/a.srf", nullptr), PVR_CA_BAD_ARGUMENT);
    EXPECT_EQ(logged_lines().back(), plain_entry("invalid buf pointer"));
    blocked = -77;
    EXPECT_EQ(IsBlockedByParentalControl("", &blocked), PVR_CA_BAD_ARGUMENT);
    EXPECT_EQ(blocked, 1);
    EXPECT_EQ(logged_lines().back(), plain_entry("strUrl[] is null"));
    is_fitted = false;
    blocked = -77;
    EXPECT_EQ(IsBlockedByParentalControl("/m/a.srf", &blocked), PVR_CA_NO_ANSWER);
    EXPECT_EQ(blocked, 1);
}

TEST_F(ConditionalAccess, LetsAnExceptionPass)
{
    rights.is_throwing = true;
    int blocked = -77;
    EXPECT_THROW(IsBlockedByParentalControl("/m/a.srf", &blocked), std::runtime_error);
    EXPECT_EQ(blocked, 1);
}
