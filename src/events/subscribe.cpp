#include "events/subscribe.h"

#include "client/log.h"
#include "client/session.h"
#include "events/callbacks.h"
#include "events/result_path.h"
#include "events/signal_path.h"

#include <string_view>

namespace pvr {

void _signal_subscribe(GDBusProxy *, const char *sender_name, const char *signal_name, GVariant *parameters,
                       void *) noexcept
{
    const Here here = PLAIN_ENTRY("Receive signal from %s with name[%s] and proxy[%p]\n", sender_name, signal_name,
                                  static_cast<void *>(g_pvr_proxy.load()));
    PLAIN_ENTRY("[g_pvr_app_data:%p][g_other_apps_data:%p][g_pvr_pvr_state:%p]\n", to_pvr_app.get().user_data,
                to_other_apps.get().user_data, to_pvr_get_state.get().user_data);
    const std::string_view name = signal_name != nullptr ? signal_name : "";
    if (name == "send_pvr_signal_to_apps")
        _pvr_signal_receive(sender_name, signal_name, parameters);
    else if (name == "result_to_apps")
        receive_result(here, parameters);
}

} // namespace pvr
