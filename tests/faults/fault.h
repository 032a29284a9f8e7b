// Faults: a call that the library makes of the system, of GIO or of the service, and the way in which it fails.
#pragma once

#include <array>
#include <cerrno>
#include <cstddef>
#include <functional>
#include <gio/gio.h>
#include <span>
#include <string>

namespace faults {

/// What the library calls and what may fail, in the order of kind_names.
enum class Kind {
    access,
    allocation,
    atfork,
    bindtextdomain,
    bus_address,
    close,
    connection,
    context,
    dbus_threads,
    flock,
    fstat,
    ftruncate,
    lseek,
    mutex_init,
    mutex_trylock,
    nanosleep,
    open,
    post,
    pread,
    preadv,
    proxy,
    readlink,
    request,
    shared_bus,
    stat,
    unlink,
    utf16,
    writev,
};

struct KindName {
    const char *name;
    std::array<const char *, 2> imports; ///< what the library imports for it
};

inline constexpr KindName kind_names[] = {
    {"access", {"access"}},
    {"operator new", {"_Znwm", "_ZnwmRKSt9nothrow_t"}},
    {"pthread_atfork", {"__register_atfork"}},
    {"bindtextdomain", {"bindtextdomain"}},
    {"g_dbus_address_get_for_bus_sync", {"g_dbus_address_get_for_bus_sync"}},
    {"close", {"close"}},
    {"g_dbus_connection_new_for_address_sync", {"g_dbus_connection_new_for_address_sync"}},
    {"g_main_context_acquire", {"g_main_context_acquire"}},
    {"dbus_threads_init_default", {"dbus_threads_init_default"}},
    {"flock", {"flock"}},
    {"fstat", {"fstat"}},
    {"ftruncate", {"ftruncate"}},
    {"lseek", {"lseek"}},
    {"pthread_mutex_init", {"pthread_mutex_init"}},
    {"pthread_mutex_trylock", {"pthread_mutex_trylock"}},
    {"nanosleep", {"nanosleep"}},
    {"open", {"open"}},
    {"g_dbus_proxy_call", {"g_dbus_proxy_call"}},
    {"pread", {"pread"}},
    {"preadv", {"preadv"}},
    {"g_dbus_proxy_new_sync", {"g_dbus_proxy_new_sync", "g_dbus_proxy_new_for_bus_sync"}},
    {"readlink", {"readlink"}},
    {"g_dbus_proxy_call_sync", {"g_dbus_proxy_call_sync"}},
    {"g_bus_get_sync", {"g_bus_get_sync"}},
    {"stat", {"stat"}},
    {"unlink", {"unlink"}},
    {"g_utf16_to_utf8", {"g_utf16_to_utf8"}},
    {"writev", {"writev"}},
};
inline constexpr std::size_t kinds = std::size(kind_names);
static_assert(kinds == static_cast<std::size_t>(Kind::writev) + 1);

using Counts = std::array<int, kinds>;

inline const char *name_of(Kind kind) { return kind_names[static_cast<std::size_t>(kind)].name; }
inline int &of(Counts &counts, Kind kind) { return counts[static_cast<std::size_t>(kind)]; }

enum class Effect {
    fails,              ///< with errno, null or what else stands for a failure
    does_it_and_fails,  ///< a closed descriptor is closed whatever close() says
    ends,               ///< transfers nothing, as at the end of a file
    halves,             ///< transfers half of it
    fills_up,           ///< transfers half of it once, and fails from then on
    is_refused,         ///< the service answers with an error
    is_of_another_type, ///< it answers something else
    loses_the_service,  ///< the service's connection ends under the call
    loses_the_bus,      ///< our connection ends as the request is sent
};

/// Of which a fault may last: an interruption that comes again and again is no fault of a file.
enum class Length { once_or_lasting, once, lasting };

struct Way {
    Kind kind;
    const char *name;
    int error = 0;
    Effect effect = Effect::fails;
    Length length = Length::once_or_lasting;
};

inline constexpr Way ways[] = {
    {Kind::access, "EACCES", EACCES},
    {Kind::allocation, "none left", ENOMEM},
    {Kind::atfork, "ENOMEM", ENOMEM},
    {Kind::bindtextdomain, "ENOMEM", ENOMEM},
    {Kind::bus_address, "error"},
    {Kind::close, "EIO", EIO, Effect::does_it_and_fails},
    {Kind::close, "EINTR", EINTR, Effect::does_it_and_fails},
    {Kind::connection, "error"},
    {Kind::context, "another thread's"},
    {Kind::dbus_threads, "no memory"},
    {Kind::flock, "ENOLCK", ENOLCK},
    {Kind::flock, "EWOULDBLOCK", EWOULDBLOCK},
    {Kind::flock, "EINTR", EINTR, Effect::fails, Length::once},
    {Kind::fstat, "EIO", EIO},
    {Kind::ftruncate, "EIO", EIO},
    {Kind::ftruncate, "EINTR", EINTR, Effect::fails, Length::once},
    {Kind::lseek, "EIO", EIO},
    {Kind::mutex_init, "EAGAIN", EAGAIN},
    {Kind::mutex_trylock, "EBUSY", EBUSY},
    {Kind::nanosleep, "EINTR", EINTR, Effect::fails, Length::once},
    {Kind::open, "EACCES", EACCES},
    {Kind::open, "EMFILE", EMFILE},
    {Kind::open, "EEXIST", EEXIST},
    {Kind::open, "ELOOP", ELOOP},
    {Kind::post, "no bus", 0, Effect::loses_the_bus},
    {Kind::pread, "EIO", EIO},
    {Kind::pread, "EINTR", EINTR, Effect::fails, Length::once},
    {Kind::pread, "end", 0, Effect::ends},
    {Kind::pread, "half", 0, Effect::halves},
    {Kind::pread, "half and EIO", EIO, Effect::fills_up, Length::lasting},
    {Kind::preadv, "EIO", EIO},
    {Kind::preadv, "EINTR", EINTR, Effect::fails, Length::once},
    {Kind::preadv, "end", 0, Effect::ends},
    {Kind::preadv, "half", 0, Effect::halves},
    {Kind::preadv, "half and EIO", EIO, Effect::fills_up, Length::lasting},
    {Kind::proxy, "error"},
    {Kind::readlink, "ENOENT", ENOENT},
    {Kind::request, "error", 0, Effect::is_refused},
    {Kind::request, "other type", 0, Effect::is_of_another_type},
    {Kind::request, "no service", 0, Effect::loses_the_service},
    {Kind::request, "no bus", 0, Effect::loses_the_bus},
    {Kind::shared_bus, "error"},
    {Kind::stat, "EIO", EIO},
    {Kind::unlink, "EACCES", EACCES},
    {Kind::utf16, "no memory"},
    {Kind::writev, "ENOSPC", ENOSPC},
    {Kind::writev, "EINTR", EINTR, Effect::fails, Length::once},
    {Kind::writev, "half", 0, Effect::halves},
    {Kind::writev, "half and ENOSPC", ENOSPC, Effect::fills_up, Length::lasting},
};

/// One call, or all calls from one on.
struct Fault {
    const Way *way;
    int number; ///< of the call of its kind, from 1
    bool lasts;
};

std::string to_text(const Fault &fault);

/// What the service is to do with the request that is about to be sent, and that things are as before.
struct Service {
    std::function<void(Effect effect, const char *method)> misbehave;
    std::function<void(const char *method)> behave;
};

/// Counts this thread's calls that come out of the library's code, and has some of them fail, until it ends. The
/// test's own calls, and those of other libraries, count for nothing and never fail.
class Watch {
public:
    Watch(std::span<const Fault> faults, const Service &service);
    ~Watch();
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;

    const Counts &counts() const;
    /// How many calls have failed.
    int struck() const;
};

} // namespace faults
