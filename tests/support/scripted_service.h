// A Recording service that does what a test tells it, on a plain connection: it knows neither the
// interface description nor the generated glue, so that what it sees is what is on the wire.
#pragma once

#include <condition_variable>
#include <functional>
#include <gio/gio.h>
#include <iosfwd>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace support {

/// A method call as it came over the bus.
struct Request {
    std::string method;
    std::string signature;
    std::string arguments; ///< as GVariant text, with types where the text alone leaves them open
    std::string path;
    bool is_reply_expected;

    bool operator==(const Request &) const = default;
};

std::ostream &operator<<(std::ostream &, const Request &);

/// The usual request: to the service's object, with a reply expected.
Request request(const std::string &method, const std::string &signature, const std::string &arguments);

/// What the service does with a request.
struct Reply {
    enum Kind { values, error, silence, vanish } kind = error;
    std::string text = "org.example.NotScripted"; ///< values as GVariant text, or the error's name
    std::string message = "not scripted";         ///< of the error
};

inline Reply answers(std::string values) { return {Reply::values, std::move(values), {}}; }
inline Reply fails(std::string name, std::string message)
{
    return {Reply::error, std::move(name), std::move(message)};
}
inline Reply stays_silent() { return {Reply::silence, {}, {}}; }
/// The service's connection ends while the call is under way.
inline Reply vanishes() { return {Reply::vanish, {}, {}}; }

class ScriptedService {
public:
    /// Connects to the process's private bus and owns the service's name.
    ScriptedService();
    ~ScriptedService();
    ScriptedService(const ScriptedService &) = delete;
    ScriptedService &operator=(const ScriptedService &) = delete;

    void script(const std::string &method, Reply reply);
    /// The same for one list of arguments, given as GVariant text with types; it goes before the other.
    void script(const std::string &method, const std::string &arguments, Reply reply);
    /// Answers, late, everything it stayed silent on so far; returns how many requests these were.
    std::size_t answer_late(const std::function<std::string(const std::string &method)> &values);
    /// Takes what has come so far.
    std::vector<Request> requests();
    /// Waits until a request has come that nobody took yet.
    void wait_for_request();

    /// Emits a signal of the interface with a body given as GVariant text.
    void emit(const std::string &signal, const std::string &body);

    void vanish();
    void come_back();

private:
    static GDBusMessage *on_message(GDBusConnection *, GDBusMessage *, gboolean is_incoming, gpointer self) noexcept;
    /// What GLib answers otherwise is taken when it is scripted: the service's description of itself.
    bool is_taken(const char *interface);
    void handle(GDBusConnection *connection, GDBusMessage *call);

    GDBusConnection *connection_ = nullptr;
    std::mutex mutex_;
    std::condition_variable came_;
    std::map<std::string, Reply> script_; ///< by method, or by method and arguments
    std::vector<GDBusMessage *> unanswered_;
    std::vector<Request> requests_;
};

} // namespace support
