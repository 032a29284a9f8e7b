// An application on the bus that speaks to the service without the library, and the service it speaks to.
#pragma once

#include "program.h"

#include <functional>
#include <gio/gio.h>
#include <string>
#include <vector>

namespace simulator_test {

using Lines = std::vector<std::string>;

/// A connection of its own to the process's private bus. It receives the service's signals.
class Peer {
public:
    Peer();
    ~Peer();
    Peer(const Peer &) = delete;
    Peer &operator=(const Peer &) = delete;

    /// Calls a method of the service, or of its control interface. Arguments and answer are GVariant text; an error
    /// reads "org.example.Name: its text".
    std::string call(const std::string &method, const std::string &arguments = "()");
    std::string control(const std::string &method, const std::string &arguments = "()");

    /// Sends a call and does not wait; done is called with the answer, in the main context.
    void send(const std::string &method, const std::string &arguments, std::function<void(std::string)> done);

    /// The service's introspection data.
    std::string introspection();
    /// Owns a name on the bus, for as long as this lives. It must have no owner.
    void own(const std::string &name);
    /// Whether a name has an owner on the bus.
    bool has_owner(const std::string &name);

    /// Takes what the service has sent so far: everything that it sent before it answered the last call.
    /// "result_to_apps (0, <(1, 0, 1)>)", or "PS_SIGNAL_TYPE_PLAY_STATE_CHANGE of 1: 1 /a.srf" with the
    /// handle, the state, the uri and " error 2" when the result is not 0.
    Lines signals();
    /// Runs the main context until a signal has arrived that begins like this; takes all up to it.
    Lines signals_until(const std::string &beginning);

private:
    std::string call_at(const char *name, const char *path, const std::string &interface, const std::string &method,
                        const std::string &arguments);
    static void on_signal(GDBusConnection *, const char *sender, const char *path, const char *interface,
                          const char *signal, GVariant *body, gpointer self) noexcept;

    GDBusConnection *connection_;
    guint subscription_;
    Lines signals_;
};

/// The development service, from construction on. It has to end cleanly, without a leak, when the test ends.
class Simulator {
public:
    explicit Simulator(const std::vector<std::string> &options = {});
    ~Simulator();
    Simulator(const Simulator &) = delete;
    Simulator &operator=(const Simulator &) = delete;

    /// Ends the service, and returns what it has logged.
    Lines log();
    /// Ends it in the middle of whatever it does.
    void kill();
    pid_t pid() const { return program_.pid(); }

private:
    Program program_;
    bool is_over_ = false;
};

} // namespace simulator_test
