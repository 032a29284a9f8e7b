// A connection of our own to the system bus.
#pragma once

#include "client/owned.h"

#include <functional>

namespace simulator {

/// Closes the connection at its end. Every failure is a std::runtime_error that says what failed.
class Bus {
public:
    /// Connects. on_lost is called, in the main context, when the bus ends the connection.
    explicit Bus(std::function<void()> on_lost);
    ~Bus();
    Bus(const Bus &) = delete;
    Bus &operator=(const Bus &) = delete;

    GDBusConnection *connection() const { return connection_.get(); }

    /// Owns a name that nobody else owns. It is released before the connection is closed, so that it is free once the
    /// destructor has returned.
    void own(const char *name);

private:
    /// Asks the bus daemon something that it answers with a number.
    guint32 ask(const char *method, GVariant *arguments, int timeout, GError **error) const;

    std::function<void()> on_lost_;
    pvr::OwnedConnection connection_;
    const char *name_ = nullptr;
};

} // namespace simulator
