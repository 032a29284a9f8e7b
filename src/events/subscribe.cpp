#include "events/subscribe.h"

#include "client/log.h"
#include "client/session.h"
#include "events/callbacks.h"

namespace pvr {

void _signal_subscribe(GDBusProxy *, const char *sender_name, const char *signal_name, GVariant *, void *) noexcept
{
    PLAIN_ENTRY("Receive signal from %s with name[%s] and proxy[%p]\n", sender_name, signal_name,
                static_cast<void *>(g_pvr_proxy.load()));
    PLAIN_ENTRY("[g_pvr_app_data:%p][g_other_apps_data:%p][g_pvr_pvr_state:%p]\n", to_pvr_app.get().user_data, nullptr,
                nullptr);
}

} // namespace pvr
