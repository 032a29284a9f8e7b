// Conditional-access queries: what the platform says about a recording's viewing rights.
#define PVR_LOG_SOURCE "pvr_cim_wrapper.cpp"
#include "client/log.h"
#include "client/outputs.h"
#include "files/info_reader.h"
#include "pvr_service_api.h"

#include <ca_service.h>
#include <string>
#include <system_info.h>
#include <utility>
#include <vector>

using namespace pvr;

namespace {

constexpr int dtv_type_key = 333;
constexpr char ci_slots_key[] = "com.brimmel/featureconf/product.num_of_ci";

/// Where there is no CI slot nobody can have restricted anything, and neither where broadcasts know no CI.
struct CiGate {
    int standard = GetTVStandard();
    int has_ci = IsSupportCI();

    bool is_closed() const noexcept { return standard == PVR_DTV_ATSC || has_ci == 0; }
};

/// Asks the conditional-access library about a path, once there are a path, outputs and somebody to ask.
template <typename Question>
int ask(Here here, const char *path, bool has_outputs, Question question)
{
    if (path == nullptr || !has_outputs) {
        PLAIN_FAILURE_AT(here, "invalid buf pointer\n");
        return PVR_CA_BAD_ARGUMENT;
    }
    if (path[0] == '\0') {
        PLAIN_FAILURE_AT(here, "strUrl[%s] is null\n", path);
        return PVR_CA_BAD_ARGUMENT;
    }
    std::string url(path);
    CA_API::CAService *const service = CA_API::CAService::CAPVRInstance();
    if (service == nullptr)
        return PVR_CA_NO_ANSWER;
    return question(*service, url) ? PVR_CA_SUCCESS : PVR_CA_NO_ANSWER;
}

/// A question that only a cleared flag answers with no, deliberately also when the call has failed.
template <typename Question>
bool flag_of(int *out, bool &flag, Question question)
{
    flag = true;
    const bool is_answered = question(&flag);
    if (!flag)
        *out = 0;
    return is_answered;
}

} // namespace

// ---- the set

int GetDtvType() noexcept
{
    int type = PVR_DTV_ATSC;
    if (system_info_get_value_int(dtv_type_key, &type) != 0) {
        PLAIN_FAILURE("get dtv type failure\n");
        return PVR_DTV_DVB;
    }
    return type;
}

int GetTVStandard() noexcept
{
    const int type = GetDtvType();
    PLAIN_FAILURE("[FAT]dtv type [%d](0:atsc,1:dvb,2:dvbisdb)\n", type);
    return type;
}

int IsSupportCI() noexcept
{
    int slots = 0;
    system_info_get_custom_int(ci_slots_key, &slots); // a failed read counts as no slot
    PLAIN_FAILURE("system_info_get_custom_int for %s is called, retValue[%d]\n", ci_slots_key, slots);
    if (slots < 1) {
        PLAIN_FAILURE("don't support CI\n");
        return 0;
    }
    PLAIN_FAILURE("support CI\n");
    return 1;
}

// ---- a recording, by its info file

int IsATSC3Url(const char *path) noexcept
{
    constexpr int atsc3 = 1;
    if (path == nullptr) {
        PLAIN_INFO("the file path of srf is null\n");
        return 0;
    }
    DETAIL("the path of inf file is [%s]\n", path);
    pvr_file_info_s info{};
    _svc_pvr_get_pvr_file_info_vexan(path, &info); // deliberately whatever it returns
    if (info.content_version == atsc3) {
        PLAIN_INFO("[EST] PS_CONTENT_VERSION_ATSC3\n");
        return 1;
    }
    PLAIN_INFO("[EST] content_version[%d] not PS_CONTENT_VERSION_ATSC3\n", int{info.content_version});
    return 0;
}

// ---- a recording, by the conditional-access library

int IsBlockedByParentalControl(const char *path, int *blocked)
{
    const Here here = PLAIN_INFO("This func is called\n");
    write_out(blocked, 1); // blocked until the conditional-access library says otherwise
    return ask(here, path, blocked != nullptr, [=](CA_API::CAService &service, std::string &url) {
        bool flag = true;
        const bool is_answered =
            flag_of(blocked, flag, [&](bool *out) { return service.IsBlockedByParentalControl(url, out); });
        PLAIN_FAILURE_AT(here, "IsBlockedByParentalControl result[%d] bResult[%d]\n", is_answered, flag);
        return is_answered;
    });
}

int IsThumbnailValid(const char *path, int position, int *valid)
{
    const Here here = PLAIN_INFO("This func is called\n");
    write_out(valid, 1);
    if (const CiGate gate; gate.is_closed()) {
        PLAIN_FAILURE("eCurrStd[%d] is DTV_STANDARD_ATSC, and IsSupportCI()[%d] is false, bResult[%d]\n", gate.standard,
                      gate.has_ci, 1);
        return PVR_CA_SUCCESS;
    }
    return ask(here, path, valid != nullptr, [=](CA_API::CAService &service, std::string &url) {
        bool flag = true;
        int place = position;
        const bool is_answered =
            flag_of(valid, flag, [&](bool *out) { return service.CheckThumbnailValidation(url, &place, out); });
        PLAIN_FAILURE_AT(here, "CheckThumbnailValidation result[%d] bResult[%d]\n", is_answered, flag);
        return is_answered;
    });
}

int IsThisWholeFileExceededRetentionLimit(const char *path, int *exceeded)
{
    const Here here = PLAIN_INFO("This func is called\n");
    write_out(exceeded, 1);
    if (const CiGate gate; gate.is_closed()) {
        write_out(exceeded, 0);
        PLAIN_FAILURE("eCurrStd[%d] is DTV_STANDARD_ATSC, and IsSupportCI()[%d] is false, bResult[%d]\n", gate.standard,
                      gate.has_ci, 0);
        return PVR_CA_SUCCESS;
    }
    return ask(here, path, exceeded != nullptr, [=](CA_API::CAService &service, std::string &url) {
        bool flag = true;
        const bool is_answered =
            flag_of(exceeded, flag, [&](bool *out) { return service.IsFileExceededRetentionLimit(url, out); });
        PLAIN_FAILURE_AT(here, "IsFileExceededRetentionLimit result[%d] bResult[%d]\n", is_answered, flag);
        return is_answered;
    });
}

int GetCIThumbType(const char *path, int *thumb_type)
{
    const Here here = PLAIN_INFO("This func is called\n");
    write_out(thumb_type, 0);
    if (const CiGate gate; gate.is_closed()) {
        PLAIN_FAILURE("eCurrStd[%d] is DTV_STANDARD_ATSC, and IsSupportCI()[%d] is false, thumbValue[%d]\n",
                      gate.standard, gate.has_ci, 0);
        return PVR_CA_SUCCESS;
    }
    return ask(here, path, thumb_type != nullptr, [=](CA_API::CAService &service, std::string &url) {
        int type = 0;
        const bool is_answered = service.GetCIThumbType(url, &type);
        PLAIN_FAILURE_AT(here, "GetCIThumbType result[%d] bResult[%d]\n", is_answered, type);
        *thumb_type = type; // deliberately also when the call has failed
        return is_answered;
    });
}

int GetContentInfo(const char *path, int *info_type, unsigned char *play_count)
{
    const Here here = PLAIN_INFO("This func is called\n");
    write_out(info_type, 0);
    write_out(play_count, static_cast<unsigned char>(0));
    const bool has_outputs = info_type != nullptr && play_count != nullptr;
    return ask(here, path, has_outputs, [=](CA_API::CAService &service, std::string &url) {
        int type = 0;
        const bool is_answered = service.GetContentInfo(url, &type, play_count);
        PLAIN_FAILURE_AT(here, "GetContentInfo result[%d] infoType[%d] playCount[%d]\n", is_answered, type,
                         int{*play_count});
        *info_type = type; // deliberately also when the call has failed
        return is_answered;
    });
}

int GetExpiredContentSections(const char *path, int *count, int *first_start, int *first_end)
{
    const Here here = PLAIN_INFO("This func is called\n");
    write_out(count, 0);
    const bool has_outputs = count != nullptr && first_start != nullptr && first_end != nullptr;
    return ask(here, path, has_outputs, [=](CA_API::CAService &service, std::string &url) {
        std::vector<std::pair<int, int>> sections;
        const bool is_answered = service.GetExpiredContentSections(url, sections);
        PLAIN_FAILURE_AT(here, "GetExpiredContentSections result[%d]\n", is_answered);
        if (is_answered && !sections.empty()) { // deliberately the first alone, and no word about how many there are
            const auto [start, end] = sections.front();
            *first_start = start;
            *first_end = end;
            PLAIN_FAILURE_AT(here, "startTime [%ld], endTime [%ld]\n", static_cast<long>(start),
                             static_cast<long>(end));
        }
        return is_answered;
    });
}
