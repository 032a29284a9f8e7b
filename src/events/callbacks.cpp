// The calls that register callbacks.
#include "events/callbacks.h"

#include "client/call.h"
#include "client/identity.h"
#include "client/session.h"
#include "events/subscribe.h"

using namespace pvr;

namespace pvr {

constinit Slot<pvr_result_cb> to_pvr_app;
constinit Slot<pvr_signal_cb> signal_cb_func;

} // namespace pvr

namespace {

template <typename Function>
void *address(Function function) noexcept
{
    return reinterpret_cast<void *>(function);
}

template <typename Function>
void store(Slot<Function> &slot, Function function, void *user_data) noexcept
{
    if (function != nullptr)
        slot.set(function, user_data);
    connect_signal_handler(_signal_subscribe);
}

void log_connection(Here here) noexcept
{
    PLAIN_INFO_AT(here, "[g_pvr_proxy: %p] [g_handler_id:%ld]\n", static_cast<void *>(g_pvr_proxy.load()),
                  static_cast<long>(g_handler_id.load()));
}

} // namespace

int get_size_of_pvr_service_signal() noexcept { return sizeof(pvr_service_signal); }

int get_size_of_pvr_service_result() noexcept { return sizeof(pvr_service_result); }

int svc_pvr_register_result_pvr_cb(pvr_result_cb func, void *user_data) noexcept
{
    const Here here;
    if (Call call(here); !call)
        return call.code();
    _get_pid_name();
    ENTRY("| with param[func:%p user_data:%p]\n", address(func), user_data);
    store(to_pvr_app, func, user_data);
    log_connection(here);
    return PS_SUCCESS;
}

int svc_pvr_register_signal_cb(pvr_signal_cb func, void *user_data) noexcept
{
    _get_pid_name();
    if (Call call(ENTRY("| with param[func:%p user_data:%p]\n", address(func), user_data)); !call)
        return call.code();
    store(signal_cb_func, func, user_data);
    log_connection(Here());
    return PS_SUCCESS;
}
