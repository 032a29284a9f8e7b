#include "name_watch.h"

#include <gio/gio.h>
#include <utility>

#include "client/owned.h"

namespace sandbox {

using OwnedCancellable = pvr::Owned<GCancellable, g_object_unref>;

/// Held by the watch, and by the request for a connection as long as that is under way.
struct NameWatch::Shared {
    std::string name;
    State state = State::unknown;
    std::string error;
    OwnedCancellable cancellable{g_cancellable_new()};
    pvr::OwnedConnection connection;
    guint watch = 0;

    static void appeared(GDBusConnection * /*connection*/, const char * /*name*/, const char * /*owner*/, gpointer data)
    {
        static_cast<Shared *>(data)->state = State::owned;
    }

    static void vanished(GDBusConnection *connection, const char * /*name*/, gpointer data)
    {
        auto &shared = *static_cast<Shared *>(data);
        if (connection == nullptr)
            shared.error = "the connection was closed";
        else
            shared.state = State::without_owner;
    }

    static void connected(GObject * /*source*/, GAsyncResult *result, gpointer data)
    {
        const std::unique_ptr<std::shared_ptr<Shared>> held(static_cast<std::shared_ptr<Shared> *>(data));
        Shared &shared = **held;
        pvr::OwnedError error;
        shared.connection = pvr::OwnedConnection(g_dbus_connection_new_for_address_finish(result, error.slot()));
        if (!shared.connection) {
            shared.error = error->message;
            return;
        }
        if (g_cancellable_is_cancelled(shared.cancellable.get()) != FALSE)
            return;
        shared.watch =
            g_bus_watch_name_on_connection(shared.connection.get(), shared.name.c_str(), G_BUS_NAME_WATCHER_FLAGS_NONE,
                                           appeared, vanished, &shared, nullptr);
    }
};

NameWatch::NameWatch(const std::string &address, const std::string &name) : shared_(std::make_shared<Shared>())
{
    shared_->name = name;
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    auto held = std::make_unique<std::shared_ptr<Shared>>(shared_);
    g_dbus_connection_new_for_address(address.c_str(), flags, nullptr, shared_->cancellable.get(), Shared::connected,
                                      held.release());
}

NameWatch::~NameWatch()
{
    g_cancellable_cancel(shared_->cancellable.get());
    if (shared_->watch != 0)
        g_bus_unwatch_name(shared_->watch);
    if (shared_->connection)
        g_dbus_connection_close(shared_->connection.get(), nullptr, nullptr, nullptr);
}

NameWatch::State NameWatch::state() const { return shared_->state; }

const std::string &NameWatch::error() const { return shared_->error; }

} // namespace sandbox
