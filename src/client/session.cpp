#include "client/session.h"

#include "client/catalogue.h"
#include "client/support.h"
#include "pvr_service_api.h"

#include <cstdint>
#include <dbus/dbus.h>
#include <mutex>
#include <pthread.h>

namespace pvr {

constinit std::atomic<GDBusProxy *> g_pvr_proxy{nullptr};
constinit std::atomic<unsigned long> g_handler_id{0};
constinit RenewableMutex g_mutex_get_info;

namespace {

constexpr char service_name[] = "org.vexan.tv.pvr.server";
constexpr char object_path[] = "/org/vexan/tv/pvr";
constexpr char interface_name[] = "org.vexan.tv.pvr";

constinit RenewableMutex g_mutex;
constinit std::atomic<bool> is_inherited{false};
constinit bool watches_forks = false; ///< under g_mutex

/// What a session keeps beside its proxy, so that a successor takes its place unnoticed.
/// Under g_mutex.
struct Session {
    GMainContext *context = nullptr;  ///< where the proxy's signals arrive; null when there is no session
    SignalHandler *handler = nullptr; ///< connected to the proxy, and to be connected to a successor
    GSource *successor = nullptr;     ///< will make the successor from inside the context
    bool is_stale = false;            ///< a call found the owner gone or the connection closed
};
constinit Session session;

/// A connection that nobody else in the process shares.
OwnedConnection private_connection(GError **error) noexcept
{
    const OwnedText address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, error));
    if (!address)
        return {};
    constexpr auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return OwnedConnection(g_dbus_connection_new_for_address_sync(address.get(), flags, nullptr, nullptr, error));
}

/// The shared connection to the system bus, or null when it is of no use: GIO hands out a closed one,
/// or the error of one that failed, for as long as anything in the process refers to it, and what
/// waits in a main context that nobody runs refers to it for ever.
OwnedConnection shared_connection() noexcept
{
    OwnedConnection bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    return bus && g_dbus_connection_is_closed(bus.get()) == FALSE ? std::move(bus) : OwnedConnection();
}

/// Makes a proxy in the thread's default main context.
OwnedProxy make_proxy(GError **error) noexcept
{
    OwnedProxy proxy;
    if (const OwnedConnection bus = shared_connection()) {
        // The process outlives the bus: GDBus would send it SIGTERM otherwise.
        g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
        proxy = OwnedProxy(g_dbus_proxy_new_for_bus_sync(G_BUS_TYPE_SYSTEM, G_DBUS_PROXY_FLAGS_NONE, nullptr,
                                                         service_name, object_path, interface_name, nullptr, error));
    } else if (const OwnedConnection own = private_connection(error)) {
        proxy = OwnedProxy(g_dbus_proxy_new_sync(own.get(), G_DBUS_PROXY_FLAGS_NONE, nullptr, service_name, object_path,
                                                 interface_name, nullptr, error));
    }
    return proxy;
}

void connect_to(GDBusProxy *proxy) noexcept
{
    g_handler_id = g_signal_connect_data(proxy, "g-signal", G_CALLBACK(session.handler), nullptr, nullptr,
                                         static_cast<GConnectFlags>(0));
}

/// Makes the proxy that the process uses from now on.
void adopt(OwnedProxy proxy) noexcept
{
    // Where there was no memory for it, it is tried again with the next proxy.
    if (!watches_forks)
        watches_forks = pthread_atfork(nullptr, nullptr, [] { is_inherited = true; }) == 0;

    if (session.context == nullptr)
        session.context = g_main_context_ref_thread_default();
    if (session.handler != nullptr)
        connect_to(proxy.get());
    g_pvr_proxy = proxy.release();
}

void drop_proxy() noexcept
{
    const OwnedProxy proxy(g_pvr_proxy.exchange(nullptr));
    if (const unsigned long id = g_handler_id.exchange(0); id != 0 && proxy)
        g_signal_handler_disconnect(proxy.get(), id);
    session.is_stale = false;
}

void forget_successor() noexcept
{
    if (session.successor == nullptr)
        return;
    g_source_destroy(session.successor);
    g_source_unref(session.successor);
    session.successor = nullptr;
}

/// Runs in the session's main context.
gboolean make_successor(void *) noexcept
{
    if (is_inherited)
        return G_SOURCE_REMOVE;

    const std::lock_guard lock(g_mutex);
    if (session.successor != g_main_current_source())
        return G_SOURCE_REMOVE; // destroyed, or replaced by other means, while this was on its way
    forget_successor();

    OwnedError error;
    g_main_context_push_thread_default(session.context);
    OwnedProxy proxy = make_proxy(error.slot());
    g_main_context_pop_thread_default(session.context);
    if (!proxy) {
        EXCEPTION(" Error creating proxy: %s\n", error ? error->message : "unknown");
        return G_SOURCE_REMOVE;
    }
    INFO("  [new g_pvr_proxy: %p] \n", static_cast<void *>(proxy.get()));
    adopt(std::move(proxy));
    return G_SOURCE_REMOVE;
}

void queue_successor() noexcept
{
    if (session.successor != nullptr)
        return;
    // Never g_main_context_invoke: it may run the function at once, under the lock that is held here.
    session.successor = g_idle_source_new();
    g_source_set_priority(session.successor, G_PRIORITY_DEFAULT);
    g_source_set_callback(session.successor, make_successor, nullptr, nullptr);
    g_source_attach(session.successor, session.context);
}

/// The first proxy belongs to the caller's main context, and its successors to the same one: when
/// that one is another thread's, the successor is made there, and there is none until it has run.
OwnedProxy make_proxy_in_its_context(GError **error) noexcept
{
    const OwnedContext current(g_main_context_ref_thread_default());
    if (session.context == nullptr || session.context == current.get())
        return make_proxy(error);

    if (!g_main_context_acquire(session.context)) {
        queue_successor();
        return {};
    }
    g_main_context_push_thread_default(session.context);
    OwnedProxy proxy = make_proxy(error);
    g_main_context_pop_thread_default(session.context);
    g_main_context_release(session.context);
    return proxy;
}

/// A strong reference to a proxy that is fit for a call, or null.
OwnedProxy usable_proxy() noexcept
{
    const std::lock_guard lock(g_mutex);
    GDBusProxy *proxy = session.is_stale ? nullptr : g_pvr_proxy.load();
    return OwnedProxy(proxy != nullptr ? static_cast<GDBusProxy *>(g_object_ref(proxy)) : nullptr);
}

bool is_owner_gone(const GError *error) noexcept
{
    return g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
           g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) ||
           g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY);
}

} // namespace

int check_owner(Here here) noexcept
{
    if (!is_inherited.load(std::memory_order_relaxed))
        return PS_SUCCESS;
    _get_pid_name();
    FAILURE_AT(here, " the session belongs to the parent process!!\n");
    return PS_CALL_METHOD_FAILED;
}

bool is_corrupt_address(const void *address) noexcept { return reinterpret_cast<std::uintptr_t>(address) <= 2; }

OwnedProxy acquire_session(Here here) noexcept
{
    if (OwnedProxy proxy = usable_proxy())
        return proxy;

    const std::lock_guard alone(g_mutex.guard());
    dbus_threads_init_default();
    INFO_AT(here, " dbus_threads_init_default() is called\n");
    OwnedProxy proxy;
    if (svc_pvr_service_init() == PS_SESSION_READY)
        proxy = usable_proxy();
    if (proxy)
        INFO_AT(here, " g_pvr_proxy == %p!!\n", static_cast<void *>(proxy.get()));
    else
        FAILURE_AT(here, " g_pvr_proxy == NULL!!\n");
    return proxy;
}

OwnedProxy existing_session(Here here) noexcept
{
    const std::lock_guard alone(g_mutex.guard());
    if (session.context != nullptr)
        return acquire_session(here);
    FAILURE_AT(here, " g_pvr_proxy == NULL!!\n");
    return {};
}

void note_failed_call(const OwnedProxy &proxy, const GError *error) noexcept
{
    const bool is_closed = g_dbus_connection_is_closed(g_dbus_proxy_get_connection(proxy.get()));
    // A proxy that never had an owner addresses the well-known name: it finds the service by itself.
    const OwnedText owner(g_dbus_proxy_get_name_owner(proxy.get()));
    if (!is_closed && !(owner && is_owner_gone(error)))
        return;

    const std::lock_guard lock(g_mutex);
    if (g_pvr_proxy == proxy.get())
        session.is_stale = true;
}

void connect_signal_handler(SignalHandler *handler) noexcept
{
    const std::lock_guard lock(g_mutex);
    if (session.context == nullptr)
        return;
    session.handler = handler; // a proxy that was lost just now hands it on to its successor
    if (GDBusProxy *proxy = g_pvr_proxy; proxy != nullptr && g_handler_id == 0)
        connect_to(proxy);
}

void disconnect_signal_handler() noexcept
{
    const std::lock_guard lock(g_mutex);
    if (GDBusProxy *proxy = g_pvr_proxy; proxy != nullptr)
        if (const unsigned long id = g_handler_id.exchange(0); id != 0) {
            g_signal_handler_disconnect(proxy, id);
            session.handler = nullptr; // a successor must not have it either
        }
}

} // namespace pvr

using namespace pvr;

int svc_pvr_service_init() noexcept
{
    if (const int refusal = check_owner(Here()); refusal != PS_SUCCESS)
        return refusal;

    _get_pid_name();
    PLAIN_ENTRY("this func is started, g_mutex[%p]\n", g_mutex.address());
    if (is_corrupt_address(g_mutex.address())) {
        EXCEPTION(" memory corruption for g_mutex: PS_CALL_METHOD_FAILED, p_mutex[%p]\n", g_mutex.address());
        return PS_CALL_METHOD_FAILED;
    }

    const std::lock_guard alone(g_mutex.guard());
    int error_number = g_mutex.renew(); // deliberately on every call
    if (error_number == 0)
        error_number = g_mutex_get_info.renew();
    if (error_number != 0) {
        EXCEPTION(" pthread_mutex_init failed[%d]: PS_CALL_METHOD_FAILED\n", error_number);
        return PS_CALL_METHOD_FAILED;
    }

    PLAIN_ENTRY("before calling pthread_mutex_lock() with g_mutex address[%p]\n", g_mutex.address());
    const std::lock_guard lock(g_mutex);
    if (session.is_stale)
        drop_proxy();
    if (GDBusProxy *existing = g_pvr_proxy; existing != nullptr) {
        INFO("  [already g_pvr_proxy: %p] \n", static_cast<void *>(existing));
    } else {
        DETAIL("Start to init pvr-service client by Thread:[%d] [%s]\n", identity().g_thread_id,
               identity().g_thread_name);
        PLAIN_ENTRY("Last modified date[2016-3-3 12:33]\n");
        if (_is_support_pvr() != PS_SUCCESS) {
            EXCEPTION(" _is_support_pvr: PS_CALL_METHOD_FAILED\n");
            return PS_CALL_METHOD_FAILED;
        }

        dbus_threads_init_default();
        DETAIL("dbus_threads_init_default is called\n");
        OwnedError error;
        OwnedProxy proxy = make_proxy_in_its_context(error.slot());
        if (error)
            EXCEPTION("  [g_pvr_proxy: %p][error:%s] \n", static_cast<void *>(proxy.get()), error->message);
        INFO("  [new g_pvr_proxy: %p] \n", static_cast<void *>(proxy.get()));
        if (!proxy) {
            if (error)
                EXCEPTION(" Error creating proxy: %s\n", error->message);
            return PS_NO_PROXY;
        }
        forget_successor();
        adopt(std::move(proxy));
    }

    DETAIL("g_pvr_proxy initilize success, PROJECT_MODEL[%s].\n", project_model);
    bind_catalogue(Here());
    return PS_SESSION_READY;
}

int svc_pvr_service_destroy() noexcept
{
    if (const int refusal = check_owner(Here()); refusal != PS_SUCCESS)
        return refusal;

    if (const int refusal = _is_support_pvr(); refusal != PS_SUCCESS) {
        INFO(" did not support PVR!!\n");
        return refusal;
    }
    INFO("[g_pvr_proxy:%p]\n", static_cast<void *>(g_pvr_proxy.load()));

    const std::lock_guard lock(g_mutex);
    forget_successor();
    drop_proxy();
    if (session.context != nullptr)
        g_main_context_unref(session.context);
    session = {};
    return PS_SUCCESS;
}
