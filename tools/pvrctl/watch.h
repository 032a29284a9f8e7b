// Watches a connection for what became of the library's latest call to the service, since the library
// itself returns one code for every failure; and for the service's news, of which it tells nothing yet. It only looks
// on.
#pragma once

#include <gio/gio.h>
#include <string>
#include <vector>

namespace pvrctl {

/// A method call and what has come back.
struct Exchange {
    enum Kind { nothing_sent, unanswered, answered, error } kind = nothing_sent;
    std::string method;
    std::string error_name;
    std::string error_text;
};

/// What the service tells of on its own (ps_method_e), and the numbers that it tells.
struct News {
    int method;
    std::vector<int> numbers;
};

class Watch {
public:
    explicit Watch(GDBusConnection *connection);
    ~Watch();
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;

    /// The latest call to the service's interface, since the last one was forgotten.
    Exchange latest() const;

    /// From here on only a later call counts.
    void forget();

    /// Keeps the news of a method, from here on and no other.
    void listen(int method);
    /// Those that have come since it was asked last.
    std::vector<News> take_news();

private:
    struct Shared;

    static GDBusMessage *on_message(GDBusConnection *, GDBusMessage *message, gboolean is_incoming,
                                    gpointer shared) noexcept;

    GDBusConnection *connection_;
    Shared *shared_; ///< owned by the filter: GDBus's thread may still be in on_message when it is removed
    unsigned filter_;
};

} // namespace pvrctl
