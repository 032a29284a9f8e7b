// A recording's viewing rights, as applications ask for them.
#include "client/log.h"
#include "client/outputs.h"
#include "client/support.h"
#include "pvr_service_api.h"

#include <algorithm>
#include <array>

using namespace pvr;

namespace {

/// Beyond what the platform's libraries can be trusted with: an application's call never throws.
template <typename Question>
int answered(Question question) noexcept
{
    try {
        return question();
    } catch (...) {
        return PVR_CA_NO_ANSWER;
    }
}

constexpr int success_of(int result) noexcept { return result == PVR_CA_SUCCESS ? 1 : 0; }

constexpr std::size_t most_sections = 100;

} // namespace

int svc_pvr_is_thumbnail_valid(const char *file_name, int position, int *valid) noexcept
{
    ENTRY(", [file_name:%s][position%ld]\n", file_name, static_cast<long>(position));
    int is_valid = 0;
    const int result = answered([&] { return IsThumbnailValid(file_name, position, &is_valid); });
    write_out(valid, is_valid);
    FAILURE(" [iResult:%d] bResult[%d]\n", result, is_valid);
    return PS_SUCCESS; // deliberately: only the output tells
}

int svc_pvr_is_blocked_by_parental_control(const char *file_name, int *blocked) noexcept
{
    ENTRY(" [file_name:%s]\n", file_name);
    int is_blocked = 0;
    const int result = answered([&] { return IsBlockedByParentalControl(file_name, &is_blocked); });
    write_out(blocked, is_blocked);
    FAILURE(" [iResult:%d] [bResult:%d]\n", result, is_blocked);
    return result;
}

int svc_pvr_is_this_whole_file_exceeded_retention_limit(const char *file_name, int *exceeded) noexcept
{
    ENTRY(" [file_name:%s]\n", file_name);
    int is_exceeded = 0;
    const int result = answered([&] { return IsThisWholeFileExceededRetentionLimit(file_name, &is_exceeded); });
    write_out(exceeded, is_exceeded);
    FAILURE(" [g_result:%d] limit_file[%d]\n", result, is_exceeded);
    return result;
}

int svc_pvr_get_content_info(const char *file_name, int *info_type, int *play_count, int *success) noexcept
{
    ENTRY(" [file_name:%s]\n", file_name);
    int type = 0;
    unsigned char count = 0;
    const int result = answered([&] { return GetContentInfo(file_name, &type, &count); });
    write_out(info_type, type);
    write_out(play_count, int{count});
    write_out(success, success_of(result));
    FAILURE(" [g_result:%d] play_count[%d]\n", result, int{count});
    return PS_SUCCESS; // deliberately: only the outputs tell
}

int svc_pvr_get_ci_thumb_type(const char *file_name, int *thumb_type, int *success) noexcept
{
    ENTRY(" [file_name:%s]\n", file_name);
    int type = 0;
    const int result = answered([&] { return GetCIThumbType(file_name, &type); });
    write_out(thumb_type, type);
    write_out(success, success_of(result));
    FAILURE(" [g_result:%d]\n", result);
    return PS_SUCCESS; // deliberately: only the outputs tell
}

int svc_pvr_get_expired_content_sections(const char *file_name, expired_content_section *sections, int *count,
                                         int *success) noexcept
{
    if (const int refusal = check_support(ENTRY(" [file_name:%s]\n", file_name)); refusal != PS_SUCCESS)
        return refusal;
    if (sections == nullptr || count == nullptr || success == nullptr) {
        PLAIN_FAILURE("expired_content_sections == NULL! please malloc mamory before call this funtion.\n");
        return PS_CALL_METHOD_FAILED;
    }
    int number = 0;
    std::array<int, most_sections> starts{};
    std::array<int, most_sections> ends{};
    const int result =
        answered([&] { return GetExpiredContentSections(file_name, &number, starts.data(), ends.data()); });
    if (result == PVR_CA_SUCCESS) {
        number = std::clamp(number, 0, static_cast<int>(most_sections));
        *count = number;
        for (std::size_t i = 0; i < static_cast<std::size_t>(number); ++i)
            sections[i] = {starts[i], ends[i]};
    }
    FAILURE(" [iResult:%d] iCount[%d]\n", result, number);
    *success = success_of(result);
    return result;
}

unsigned get_size_of_expired_content_section() noexcept { return sizeof(expired_content_section); }
