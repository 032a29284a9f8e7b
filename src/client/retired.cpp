// Calls that were retired: they answer success and do nothing, so that old applications still load.
#include "client/log.h"
#include "pvr_service_api.h"

using namespace pvr;

namespace {

int retired(Here here) noexcept
{
    INFO_AT(here, " [DELETED_API please call other replace api]\n");
    return PS_SUCCESS;
}

} // namespace

int svc_pvr_is_recording_available(void *) noexcept { return retired(Here()); }
int svc_pvr_get_recording_time(void *) noexcept { return retired(Here()); }
int svc_pvr_get_recording_channel(void *) noexcept { return retired(Here()); }
int svc_pvr_is_pvr_operating(void *) noexcept { return retired(Here()); }
int svc_pvr_is_recording_pause(void *) noexcept { return retired(Here()); }
int svc_pvr_get_rec_default_dev_index(void *) noexcept { return retired(Here()); }
int svc_pvr_get_rec_device_key_by_index(void *) noexcept { return retired(Here()); }
int svc_pvr_get_recording_file_info(void *) noexcept { return retired(Here()); }
int svc_pvr_remove_recording_info(void *) noexcept { return retired(Here()); }
