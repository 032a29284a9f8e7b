// The bus as a target sets it: a connection and a proxy that lead nowhere, and answers made in place. The linker puts
// it where the library calls GDBus (--wrap).
#pragma once

#include <functional>
#include <gio/gio.h>

namespace fuzz {

struct Bus {
    /// What comes of a call: the answer, which is released, or null, with the error set or without.
    std::function<GVariant *(const char *method, GError **error)> answer;
    bool is_closed = false;     ///< whether the connection was lost
    const char *owner = ":1.7"; ///< of the service's name; null for none
    int calls = 0;              ///< so far, of those that wait for an answer
};
extern Bus bus;

} // namespace fuzz
