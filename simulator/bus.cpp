#include "bus.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace simulator {
namespace {

constexpr guint32 do_not_queue = 4;
constexpr guint32 is_primary_owner = 1;
constexpr int usual_timeout = -1;
constexpr int longest_farewell = 1000; ///< milliseconds that a bus that hangs may hold up the end

pvr::OwnedConnection connect()
{
    constexpr auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    pvr::OwnedError error;
    const pvr::OwnedText address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, error.slot()));
    pvr::OwnedConnection connection;
    if (address)
        connection = pvr::OwnedConnection(
            g_dbus_connection_new_for_address_sync(address.get(), flags, nullptr, nullptr, error.slot()));
    if (!connection)
        throw std::runtime_error(std::string("cannot reach the system bus: ") + error->message);
    return connection;
}

} // namespace

Bus::Bus(std::function<void()> on_lost) : on_lost_(std::move(on_lost)), connection_(connect())
{
    const auto on_closed =
        +[](GDBusConnection *, gboolean, GError *, gpointer self) noexcept { static_cast<Bus *>(self)->on_lost_(); };
    g_signal_connect_data(connection_.get(), "closed", G_CALLBACK(on_closed), this, nullptr,
                          static_cast<GConnectFlags>(0));
}

Bus::~Bus()
{
    g_signal_handlers_disconnect_by_data(connection_.get(), this);
    if (name_ != nullptr && g_dbus_connection_is_closed(connection_.get()) == FALSE)
        ask("ReleaseName", g_variant_new("(s)", name_), longest_farewell, nullptr);
    g_dbus_connection_flush_sync(connection_.get(), nullptr, nullptr);
    g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

void Bus::own(const char *name)
{
    pvr::OwnedError error;
    const guint32 answer = ask("RequestName", g_variant_new("(su)", name, do_not_queue), usual_timeout, error.slot());
    if (error)
        throw std::runtime_error(std::string("cannot own ") + name + ": " + error->message);
    if (answer != is_primary_owner)
        throw std::runtime_error(std::string("cannot own ") + name + ": another service on this bus owns it");
    name_ = name;
}

guint32 Bus::ask(const char *method, GVariant *arguments, int timeout, GError **error) const
{
    const pvr::OwnedVariant reply(g_dbus_connection_call_sync(
        connection_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method, arguments,
        G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, timeout, nullptr, error));
    guint32 answer = 0;
    if (reply)
        g_variant_get(reply.get(), "(u)", &answer);
    return answer;
}

} // namespace simulator
