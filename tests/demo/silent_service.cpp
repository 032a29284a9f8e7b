// The development service, struck dumb: it does its work, answers, and sends no signal. Its program is linked with
// this function in the place of GIO's.
#include <gio/gio.h>

gboolean g_dbus_connection_emit_signal(GDBusConnection *, const char *, const char *, const char *, const char *,
                                       GVariant *parameters, GError **)
{
    g_variant_unref(g_variant_ref_sink(parameters));
    return TRUE;
}
