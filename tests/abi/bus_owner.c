/* Asks the system bus for a name and prints what became of it; keeps the name until its input ends. */
#include <gio/gio.h>
#include <stdio.h>

int main(int argc, char **argv)
{
    GError *error = NULL;
    GDBusConnection *bus = argc == 2 ? g_bus_get_sync(G_BUS_TYPE_SYSTEM, NULL, &error) : NULL;
    GVariant *reply = NULL;
    if (bus != NULL)
        reply = g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                            "org.freedesktop.DBus", "RequestName", g_variant_new("(su)", argv[1], 0),
                                            G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, -1, NULL, &error);
    if (reply == NULL) {
        puts(error != NULL ? error->message : "usage: bus_owner NAME");
        return 1;
    }
    puts("owned");
    fflush(stdout);
    while (getchar() != EOF)
        ;
    return 0;
}
