// Recording and timeshift control.
#include "client/call.h"

#include <cinttypes>

using namespace pvr;

int svc_pvr_stop_pvr_sync(std::uint64_t service_id, const char *called_app) noexcept
{
    // Deliberately asynchronous in spite of its name: nothing waits, and no failure comes back.
    Call call(ENTRY("[service_id:%" PRIu64 "][called_app:%s]\n", service_id, called_app));
    auto answer = call.post(wire::sync_stop_pvr, service_id, called_app);
    return answer.transport_rule();
}
