// The calls that register callbacks and take them back.
#include "events/callbacks.h"

#include "client/call.h"
#include "client/identity.h"
#include "client/session.h"
#include "events/subscribe.h"

using namespace pvr;

namespace pvr {

constinit Slot<pvr_result_cb> to_pvr_app;
constinit Slot<pvr_result_point_cb> to_pvr_app_point;
constinit Slot<pvr_result_third_cb> to_other_apps;
constinit Slot<pvr_state_cb> to_pvr_get_state;
constinit Slot<pvr_signal_cb> signal_cb_func;
constinit Slot<pvr_signal_point_cb> signal_pointer_cb_func;

constinit std::mutex g_signal_cb_list_mutex;
constinit std::array<SignalListEntry, signal_list_size> g_signal_cb_list{};

Registration<pvr_signal_cb> listed_signal_cb(int index) noexcept
{
    const SignalListEntry &entry = g_signal_cb_list[static_cast<std::size_t>(index)];
    if (entry.is_used != 1)
        return {}; // seen without the lock: most entries are free
    const std::lock_guard lock(g_signal_cb_list_mutex);
    return {entry.function, entry.user_data};
}

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

/// The registrations that check before they log.
template <typename Function>
int register_checked(Here here, Slot<Function> &slot, Function func, void *user_data) noexcept
{
    if (Call call(here); !call)
        return call.code();
    _get_pid_name();
    ENTRY_AT(here, "| with param[func:%p user_data:%p]\n", address(func), user_data);
    store(slot, func, user_data);
    log_connection(here);
    return PS_SUCCESS;
}

/// Empties a slot that holds this function, and tells of the connection.
template <typename Function>
int unregister_checked(Here here, Slot<Function> &slot, Function func) noexcept
{
    if (Call call(here); !call)
        return call.code();
    _get_pid_name();
    ENTRY_AT(here, "| with param[func:%p]\n", address(func));
    if (func != nullptr)
        slot.clear_if(func);
    log_connection(here);
    return PS_SUCCESS;
}

/// For the callbacks of results. Deliberately, the others are not asked: they receive nothing any longer either.
template <typename Function>
int unregister_result(Here here, Slot<Function> &slot, Function func) noexcept
{
    const int result = unregister_checked(here, slot, func);
    if (result == PS_SUCCESS && to_pvr_app.is_empty() && to_pvr_app_point.is_empty() && to_other_apps.is_empty())
        disconnect_signal_handler();
    return result;
}

/// Deliberately, whichever function is registered is taken out, and nothing is disconnected.
template <typename Function>
int unregister_signal(Here here, Slot<Function> &slot, Function func) noexcept
{
    if (Call call(here); !call)
        return call.code();
    _get_pid_name();
    ENTRY_AT(here, "| with param[func:%p]\n", address(func));
    if (func != nullptr)
        slot.clear();
    return PS_SUCCESS;
}

void fill(SignalListEntry &entry, int is_used, pvr_signal_cb func, void *user_data) noexcept
{
    entry.function = func;
    entry.user_data = user_data;
    entry.is_used = is_used;
}

/// Deliberately, the first free entry is taken before a later one is found that holds the function already.
void store_in_list(Here here, pvr_signal_cb func, void *user_data) noexcept
{
    for (int index = 0; index < signal_list_size; ++index) {
        SignalListEntry &entry = g_signal_cb_list[static_cast<std::size_t>(index)];
        if (entry.is_used == 0) {
            fill(entry, 1, func, user_data);
            PLAIN_INFO_AT(here, "idx[%d]: func[%p] is registered\n", index, address(func));
            return;
        }
        if (entry.function == func) {
            PLAIN_INFO_AT(here, "func[%p] is already registered\n", address(func));
            return;
        }
    }
    PLAIN_INFO_AT(here, "func[%p] is not registered. it seems that %d callback functions are already registered\n",
                  address(func), signal_list_size);
}

void remove_from_list(Here here, pvr_signal_cb func) noexcept
{
    for (SignalListEntry &entry : g_signal_cb_list)
        if (entry.is_used == 1 && entry.function == func) {
            fill(entry, 0, nullptr, nullptr);
            PLAIN_INFO_AT(here, "func[%p] is unregistered\n", address(func));
            return;
        }
    PLAIN_INFO_AT(here, "func[%p] is not found and not unregistered\n", address(func));
}

} // namespace

int get_size_of_pvr_service_signal() noexcept { return sizeof(pvr_service_signal); }

int get_size_of_pvr_service_result() noexcept { return sizeof(pvr_service_result); }

int get_size_of_pvr_result_third() noexcept { return sizeof(pvr_result_third); }

int svc_pvr_register_result_pvr_cb(pvr_result_cb func, void *user_data) noexcept
{
    return register_checked(Here(), to_pvr_app, func, user_data);
}

int svc_pvr_register_result_pvr_point_cb(pvr_result_point_cb func, void *user_data) noexcept
{
    return register_checked(Here(), to_pvr_app_point, func, user_data);
}

int svc_pvr_register_to_other_apps_cb(pvr_result_third_cb func, void *user_data) noexcept
{
    return register_checked(Here(), to_other_apps, func, user_data);
}

int svc_pvr_register_get_pvr_state_cb(pvr_state_cb func, void *user_data) noexcept
{
    return register_checked(Here(), to_pvr_get_state, func, user_data);
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

int svc_pvr_register_signal_pointer_cb(pvr_signal_point_cb func, void *user_data) noexcept
{
    _get_pid_name();
    if (Call call(ENTRY("| with param[func:%p user_data:%p]\n", address(func), user_data)); !call)
        return call.code();
    store(signal_pointer_cb_func, func, user_data);
    const auto [function, data] = signal_pointer_cb_func.get();
    PLAIN_INFO("signal_pointer_cb_func[%p] g_signal_pointer_data[%p] [g_pvr_proxy:%p] [g_handler_id:%ld]\n",
               address(function), data, static_cast<void *>(g_pvr_proxy.load()),
               static_cast<long>(g_handler_id.load()));
    return PS_SUCCESS;
}

int svc_pvr_register_signal_cb_in_list(pvr_signal_cb func, void *user_data) noexcept
{
    _get_pid_name();
    const Here here = ENTRY("| with param[func:%p user_data:%p]\n", address(func), user_data);
    if (Call call(here); !call)
        return call.code();
    if (func == nullptr)
        return PS_SUCCESS;
    const std::lock_guard lock(g_signal_cb_list_mutex);
    store_in_list(here, func, user_data);
    connect_signal_handler(_signal_subscribe);
    log_connection(here);
    return PS_SUCCESS;
}

int svc_pvr_unregister_result_pvr_cb(pvr_result_cb func) noexcept
{
    return unregister_result(Here(), to_pvr_app, func);
}

int svc_pvr_unregister_result_pvr_point_cb(pvr_result_point_cb func) noexcept
{
    return unregister_result(Here(), to_pvr_app_point, func);
}

int svc_pvr_unregister_to_other_apps_cb(pvr_result_third_cb func) noexcept
{
    return unregister_result(Here(), to_other_apps, func);
}

int svc_pvr_unregister_get_pvr_state_cb(pvr_state_cb func) noexcept
{
    const int result = unregister_checked(Here(), to_pvr_get_state, func);
    if (result == PS_SUCCESS)
        disconnect_signal_handler(); // deliberately, whatever else is registered
    return result;
}

int svc_pvr_unregister_signal_cb(pvr_signal_cb func) noexcept
{
    return unregister_signal(Here(), signal_cb_func, func);
}

int svc_pvr_unregister_signal_pointer_cb(pvr_signal_point_cb func) noexcept
{
    return unregister_signal(Here(), signal_pointer_cb_func, func);
}

int svc_pvr_unregister_signal_cb_in_list(pvr_signal_cb func) noexcept
{
    const Here here;
    if (Call call(here); !call)
        return call.code();
    _get_pid_name();
    ENTRY_AT(here, "| with param[func:%p]\n", address(func));
    if (func == nullptr)
        return PS_SUCCESS;
    const std::lock_guard lock(g_signal_cb_list_mutex);
    remove_from_list(here, func); // deliberately, the handler stays connected
    return PS_SUCCESS;
}
