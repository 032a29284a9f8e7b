// The Recording service as the benchmarks need it: every method succeeds at once with 1. A filter on a
// plain connection answers from the thread that reads, so that the service costs as little as can be.
#include <cstdio>
#include <cstring>
#include <gio/gio.h>

namespace {

constexpr char service_name[] = "org.vexan.tv.pvr.server";
constexpr char object_path[] = "/org/vexan/tv/pvr";
constexpr char interface_name[] = "org.vexan.tv.pvr";
constexpr char properties_interface[] = "org.freedesktop.DBus.Properties";

GVariant *answer_to(const char *interface)
{
    if (g_strcmp0(interface, interface_name) == 0)
        return g_variant_new("(i)", 1);
    if (g_strcmp0(interface, properties_interface) == 0) // a new proxy asks for all: there are none
        return g_variant_new("(a{sv})", nullptr);
    return nullptr;
}

/// As many signals as the first number of a call's arguments asks for.
void send_signals(GDBusConnection *connection, GVariant *arguments)
{
    constexpr std::size_t digits_of_a_record = 582;
    char digits[digits_of_a_record + 1];
    std::memset(digits, '5', digits_of_a_record);
    digits[digits_of_a_record] = '\0';
    int count = 0;
    g_variant_get_child(arguments, 0, "i", &count);
    for (int i = 0; i < count; ++i)
        g_dbus_connection_emit_signal(connection, nullptr, object_path, interface_name, "send_pvr_signal_to_apps",
                                      g_variant_new("(is)", 1, digits), nullptr);
}

GDBusMessage *answer(GDBusConnection *connection, GDBusMessage *message, gboolean is_incoming, void *)
{
    if (is_incoming == FALSE || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL ||
        g_strcmp0(g_dbus_message_get_path(message), object_path) != 0)
        return message;
    GVariant *body = answer_to(g_dbus_message_get_interface(message));
    if (body == nullptr)
        return message;

    if (g_strcmp0(g_dbus_message_get_member(message), "format") == 0)
        send_signals(connection, g_dbus_message_get_body(message));
    GDBusMessage *reply = g_dbus_message_new_method_reply(message);
    g_dbus_message_set_body(reply, body);
    g_dbus_connection_send_message(connection, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
    g_object_unref(reply);
    g_object_unref(message);
    return nullptr;
}

/// Whether this process became the name's owner.
bool own_name(GDBusConnection *connection, GError **error)
{
    constexpr guint32 do_not_queue = 4;
    constexpr guint32 primary_owner = 1;
    GVariant *reply =
        g_dbus_connection_call_sync(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                    "RequestName", g_variant_new("(su)", service_name, do_not_queue),
                                    G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, error);
    if (reply == nullptr)
        return false;
    guint32 outcome = 0;
    g_variant_get(reply, "(u)", &outcome);
    g_variant_unref(reply);
    return outcome == primary_owner;
}

} // namespace

int main()
{
    GError *error = nullptr;
    GDBusConnection *connection = g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, &error);
    if (connection != nullptr)
        g_dbus_connection_add_filter(connection, answer, nullptr, nullptr);
    if (connection == nullptr || !own_name(connection, &error)) {
        std::fprintf(stderr, "cannot serve %s: %s\n", service_name, error != nullptr ? error->message : "it is owned");
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE)); // until the bus or the parent goes
}
