#include "support/bus.h"

namespace fuzz {

Bus bus;

namespace {

/// Stands for what only the functions below look into.
GObject *stand_in() { return static_cast<GObject *>(g_object_new(G_TYPE_OBJECT, nullptr)); }

GDBusConnection *connection()
{
    static GObject *const only = stand_in();
    return reinterpret_cast<GDBusConnection *>(only);
}

void consume(GVariant *parameters) { g_variant_unref(g_variant_ref_sink(parameters)); }

} // namespace
} // namespace fuzz

using namespace fuzz;

extern "C" {

GDBusConnection *__wrap_g_bus_get_sync(GBusType, GCancellable *, GError **)
{
    g_object_ref(connection());
    return connection();
}

gboolean __wrap_g_dbus_connection_is_closed(GDBusConnection *) { return bus.is_closed ? TRUE : FALSE; }

void __wrap_g_dbus_connection_set_exit_on_close(GDBusConnection *, gboolean) {}

GDBusProxy *__wrap_g_dbus_proxy_new_for_bus_sync(GBusType, GDBusProxyFlags, GDBusInterfaceInfo *, const char *,
                                                 const char *, const char *, GCancellable *, GError **)
{
    return reinterpret_cast<GDBusProxy *>(stand_in());
}

GDBusConnection *__wrap_g_dbus_proxy_get_connection(GDBusProxy *) { return connection(); }

char *__wrap_g_dbus_proxy_get_name_owner(GDBusProxy *) { return g_strdup(bus.owner); }

GVariant *__wrap_g_dbus_proxy_call_sync(GDBusProxy *, const char *method, GVariant *parameters, GDBusCallFlags, int,
                                        GCancellable *, GError **error)
{
    consume(parameters);
    ++bus.calls;
    return bus.answer(method, error);
}

void __wrap_g_dbus_proxy_call(GDBusProxy *, const char *, GVariant *parameters, GDBusCallFlags, int, GCancellable *,
                              GAsyncReadyCallback, void *)
{
    consume(parameters);
}

} // extern "C"
