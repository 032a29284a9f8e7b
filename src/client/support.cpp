#include "client/support.h"

#include "pvr_service_api.h"

#include <system_info.h>
#include <unistd.h>

namespace pvr {
namespace {

constexpr char override_file[] = "/tmp/PVR_SERVICE_API_IS_SUPPORT_PVR";
constexpr char support_key[] = "com.brimmel/featureconf/pvr.pvr_support";

} // namespace

int _is_support_pvr() noexcept
{
    if (access(override_file, F_OK) == 0)
        return PS_SUCCESS;

    bool supported = false;
    const int failure = system_info_get_custom_bool(support_key, &supported);
    DETAIL("system_info_get_custom_bool for %s is called, bSupportPVR[%d]\n", support_key, supported);
    if (failure != 0) {
        PLAIN_INFO("system_info_get_custom_bool failure\n");
        return PS_SUCCESS; // deliberately: a product that cannot be asked counts as supported
    }
    if (!supported) {
        PLAIN_INFO("system_info_get_custom_bool for %s is called, bSupportPVR[%d]\n", support_key, supported);
        return PS_CALL_METHOD_FAILED;
    }
    return PS_SUCCESS;
}

int check_support(Here here) noexcept
{
    const int refusal = _is_support_pvr();
    if (refusal != PS_SUCCESS)
        INFO_AT(here, " did not support PVR!!\n");
    return refusal;
}

} // namespace pvr
