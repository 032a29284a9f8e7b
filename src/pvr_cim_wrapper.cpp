// Conditional-access queries: what the platform says about a recording's viewing rights.
#define PVR_LOG_SOURCE "pvr_cim_wrapper.cpp"
#include "client/log.h"
#include "client/outputs.h"
#include "pvr_service_api.h"

#include <ca_service.h>
#include <string>
#include <system_info.h>

using namespace pvr;

namespace {

constexpr int dtv_type_key = 333;
constexpr char ci_slots_key[] = "com.brimmel/featureconf/product.num_of_ci";

} // namespace

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

int IsBlockedByParentalControl(const char *path, int *blocked)
{
    PLAIN_INFO("This func is called\n");
    write_out(blocked, 1); // blocked until the conditional-access library says otherwise
    if (path == nullptr || blocked == nullptr) {
        PLAIN_FAILURE("invalid buf pointer\n");
        return PVR_CA_BAD_ARGUMENT;
    }
    if (path[0] == '\0') {
        PLAIN_FAILURE("strUrl[%s] is null\n", path);
        return PVR_CA_BAD_ARGUMENT;
    }

    std::string url(path);
    CA_API::CAService *service = CA_API::CAService::CAPVRInstance();
    if (service == nullptr)
        return PVR_CA_NO_ANSWER;
    bool is_blocked = true;
    const bool is_answered = service->IsBlockedByParentalControl(url, &is_blocked);
    PLAIN_FAILURE("IsBlockedByParentalControl result[%d] bResult[%d]\n", is_answered, is_blocked);
    if (!is_blocked) // deliberately also when the call failed
        *blocked = 0;
    return is_answered ? PVR_CA_SUCCESS : PVR_CA_NO_ANSWER;
}
