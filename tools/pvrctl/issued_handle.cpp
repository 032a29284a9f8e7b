#include "issued_handle.h"

#include <pvr_service_api.h>
#include <string>

namespace pvrctl {

IssuedHandle::IssuedHandle(Service &service, int (*get)(int *handle)) : service_(service)
{
    service.check(get(&number_));
    if (number_ < 0)
        throw Failure(ExitCode::refused, "the service issued no handle; it answered " + std::to_string(number_));
}

IssuedHandle::~IssuedHandle()
{
    // A service that is silent would only be waited for once more.
    if (!is_kept_ && service_.is_answering())
        svc_pvr_release_handle(number_);
}

} // namespace pvrctl
