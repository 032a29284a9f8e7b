// What the service tells the person who watches it: one line for each call and each signal.
#pragma once

#include <functional>
#include <gio/gio.h>
#include <string>
#include <string_view>
#include <utility>

namespace simulator {

class Log {
public:
    explicit Log(bool is_quiet) : is_quiet_(is_quiet) {}

    /// Has somebody given each line as well, also when quiet.
    void copy_to(std::function<void(const std::string &text)> copy) { copy_ = std::move(copy); }

    /// Writes a line to standard error, unless quiet.
    void line(const std::string &text) const;

private:
    bool is_quiet_;
    std::function<void(const std::string &text)> copy_;
};

/// A text of somebody else's in a line: control characters escaped, and cut when it is long.
std::string shown(std::string_view text);
/// A value of the wire: texts as they are, anything else as GVariant prints it.
std::string shown(GVariant *value);
/// "play_start(handle 1, uri /m/a.srf, startPos 0)", named as the interface names things.
std::string shown_call(const GDBusMethodInfo &method, GVariant *arguments);

} // namespace simulator
