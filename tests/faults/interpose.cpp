// The functions that the library imports and that may fail: the program's own, which go before the libraries'. A
// preloaded library would come behind the address sanitizer's, and see the sanitizer call it and not our library.
#include "faults/watch.h"

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <cstdlib>
#include <dbus/dbus.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <libintl.h>
#include <new>
#include <pthread.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

using namespace faults;

#define EXPORTED extern "C" __attribute__((visibility("default")))
// It has to be the caller's own frame that is asked.
#define CALLER __builtin_return_address(0)

namespace {

using Clock = std::chrono::steady_clock;

/// What the library has slept without sleeping: a lock that is never free would hold up every run for long.
Clock::duration slept{};

/// The definition that the program's own stands before.
template <typename Function>
Function *next(const char *name) noexcept
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

template <typename T>
T failed(const Strike &strike, T value) noexcept
{
    errno = strike.error;
    return value;
}

void fail(GError **error) noexcept { g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_FAILED, "injected"); }

/// Pieces of half the size, and one byte at least.
struct Half {
    Half(const iovec *pieces, int given) noexcept : count(std::min(given, 2))
    {
        std::size_t left = 0;
        for (int i = 0; i < count; ++i)
            left += pieces[i].iov_len;
        left = std::max<std::size_t>(left / 2, 1);
        for (int i = 0; i < count; ++i) {
            const std::size_t length = std::min(pieces[i].iov_len, left);
            parts[i] = {pieces[i].iov_base, length};
            left -= length;
        }
    }
    int count;
    iovec parts[2];
};

template <typename Real>
ssize_t transferred(const Strike &strike, const iovec *pieces, int count, Real real) noexcept
{
    if (strike.effect == Effect::ends)
        return 0;
    if (strike.effect == Effect::fails)
        return failed(strike, ssize_t{-1});
    const Half half(pieces, count);
    return real(half.parts, half.count);
}

/// Ends the connection under GDBus, as the end of the bus does.
void lose_the_bus(GDBusProxy *proxy) noexcept
{
    GIOStream *const stream = g_dbus_connection_get_stream(g_dbus_proxy_get_connection(proxy));
    GSocket *const socket = g_socket_connection_get_socket(G_SOCKET_CONNECTION(stream));
    shutdown(g_socket_get_fd(socket), SHUT_RDWR);
}

/// GDBus learns of the end on a thread of its own: whoever comes next is to find the connection closed, not about to
/// be.
void await_the_end(GDBusProxy *proxy) noexcept
{
    while (g_dbus_connection_is_closed(g_dbus_proxy_get_connection(proxy)) == FALSE)
        usleep(1000);
}

} // namespace

// ---- files

EXPORTED int open(const char *path, int flags, ...)
{
    static auto *const real = next<int(const char *, int, ...)>("open");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (const auto due = strike(Kind::open, CALLER))
        return failed(*due, -1);
    return real(path, flags, mode);
}

EXPORTED int close(int descriptor)
{
    static auto *const real = next<int(int)>("close");
    const auto due = strike(Kind::close, CALLER);
    const int result = real(descriptor);
    return due ? failed(*due, -1) : result;
}

EXPORTED int access(const char *path, int mode) noexcept
{
    static auto *const real = next<int(const char *, int)>("access");
    if (const auto due = strike(Kind::access, CALLER))
        return failed(*due, -1);
    return real(path, mode);
}

EXPORTED int stat(const char *path, struct stat *status) noexcept
{
    static auto *const real = next<int(const char *, struct stat *)>("stat");
    if (const auto due = strike(Kind::stat, CALLER))
        return failed(*due, -1);
    return real(path, status);
}

EXPORTED int fstat(int descriptor, struct stat *status) noexcept
{
    static auto *const real = next<int(int, struct stat *)>("fstat");
    if (const auto due = strike(Kind::fstat, CALLER))
        return failed(*due, -1);
    return real(descriptor, status);
}

EXPORTED int ftruncate(int descriptor, off_t size) noexcept
{
    static auto *const real = next<int(int, off_t)>("ftruncate");
    if (const auto due = strike(Kind::ftruncate, CALLER))
        return failed(*due, -1);
    return real(descriptor, size);
}

EXPORTED off_t lseek(int descriptor, off_t offset, int whence) noexcept
{
    static auto *const real = next<off_t(int, off_t, int)>("lseek");
    if (const auto due = strike(Kind::lseek, CALLER))
        return failed(*due, off_t{-1});
    return real(descriptor, offset, whence);
}

EXPORTED int flock(int descriptor, int operation) noexcept
{
    static auto *const real = next<int(int, int)>("flock");
    if (const auto due = strike(Kind::flock, CALLER))
        return failed(*due, -1);
    return real(descriptor, operation);
}

EXPORTED int unlink(const char *path) noexcept
{
    static auto *const real = next<int(const char *)>("unlink");
    if (const auto due = strike(Kind::unlink, CALLER))
        return failed(*due, -1);
    return real(path);
}

EXPORTED ssize_t readlink(const char *path, char *target, size_t size) noexcept
{
    static auto *const real = next<ssize_t(const char *, char *, size_t)>("readlink");
    if (const auto due = strike(Kind::readlink, CALLER))
        return failed(*due, ssize_t{-1});
    return real(path, target, size);
}

EXPORTED ssize_t pread(int descriptor, void *to, size_t size, off_t offset)
{
    static auto *const real = next<ssize_t(int, void *, size_t, off_t)>("pread");
    const iovec piece{to, size};
    if (const auto due = strike(Kind::pread, CALLER))
        return transferred(*due, &piece, 1, [=](const iovec *half, int) {
            return real(descriptor, half->iov_base, half->iov_len, offset);
        });
    return real(descriptor, to, size, offset);
}

EXPORTED ssize_t preadv(int descriptor, const iovec *pieces, int count, off_t offset)
{
    static auto *const real = next<ssize_t(int, const iovec *, int, off_t)>("preadv");
    if (const auto due = strike(Kind::preadv, CALLER))
        return transferred(*due, pieces, count,
                           [=](const iovec *half, int halves) { return real(descriptor, half, halves, offset); });
    return real(descriptor, pieces, count, offset);
}

EXPORTED ssize_t writev(int descriptor, const iovec *pieces, int count)
{
    static auto *const real = next<ssize_t(int, const iovec *, int)>("writev");
    if (const auto due = strike(Kind::writev, CALLER))
        return transferred(*due, pieces, count,
                           [=](const iovec *half, int halves) { return real(descriptor, half, halves); });
    return real(descriptor, pieces, count);
}

// ---- the process

EXPORTED int pthread_mutex_init(pthread_mutex_t *mutex, const pthread_mutexattr_t *attributes) noexcept
{
    static auto *const real = next<int(pthread_mutex_t *, const pthread_mutexattr_t *)>("pthread_mutex_init");
    if (const auto due = strike(Kind::mutex_init, CALLER))
        return due->error;
    return real(mutex, attributes);
}

EXPORTED int pthread_mutex_trylock(pthread_mutex_t *mutex) noexcept
{
    static auto *const real = next<int(pthread_mutex_t *)>("pthread_mutex_trylock");
    if (const auto due = strike(Kind::mutex_trylock, CALLER))
        return due->error;
    return real(mutex);
}

EXPORTED int __register_atfork(void (*prepare)(), void (*parent)(), void (*child)(), void *object) noexcept
{
    static auto *const real = next<int(void (*)(), void (*)(), void (*)(), void *)>("__register_atfork");
    if (const auto due = strike(Kind::atfork, CALLER))
        return due->error;
    return real(prepare, parent, child, object);
}

EXPORTED char *bindtextdomain(const char *domain, const char *directory) noexcept
{
    static auto *const real = next<char *(const char *, const char *)>("bindtextdomain");
    if (const auto due = strike(Kind::bindtextdomain, CALLER))
        return failed(*due, static_cast<char *>(nullptr));
    return real(domain, directory);
}

EXPORTED dbus_bool_t dbus_threads_init_default()
{
    static auto *const real = next<dbus_bool_t()>("dbus_threads_init_default");
    return strike(Kind::dbus_threads, CALLER) ? FALSE : real();
}

/// The library's sleep passes at once, on its clock alone.
EXPORTED int nanosleep(const timespec *time, timespec *left)
{
    static auto *const real = next<int(const timespec *, timespec *)>("nanosleep");
    const int before = errno;
    const auto due = strike(Kind::nanosleep, CALLER);
    if (due) {
        *left = *time;
        return failed(*due, -1);
    }
    if (!is_watched(CALLER))
        return real(time, left);
    slept += 100 * (std::chrono::seconds(time->tv_sec) + std::chrono::nanoseconds(time->tv_nsec));
    errno = before;
    return 0;
}

__attribute__((visibility("default"))) Clock::time_point now_for_all() noexcept
    asm("_ZNSt6chrono3_V212steady_clock3nowEv");
Clock::time_point now_for_all() noexcept
{
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    const auto now = std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    return Clock::time_point(is_watched(CALLER) ? now + slept : now);
}

namespace {

void *allocated(std::size_t size, const void *caller) noexcept
{
    return strike(Kind::allocation, caller) ? nullptr : std::malloc(std::max<std::size_t>(size, 1));
}

} // namespace

void *operator new(std::size_t size)
{
    if (void *memory = allocated(size, CALLER))
        return memory;
    throw std::bad_alloc();
}
void *operator new(std::size_t size, const std::nothrow_t &) noexcept { return allocated(size, CALLER); }
void operator delete(void *memory) noexcept { std::free(memory); }
void operator delete(void *memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void *memory, const std::nothrow_t &) noexcept { std::free(memory); }

// ---- GLib and GIO

EXPORTED gboolean g_main_context_acquire(GMainContext *context)
{
    static auto *const real = next<gboolean(GMainContext *)>("g_main_context_acquire");
    return strike(Kind::context, CALLER) ? FALSE : real(context);
}

EXPORTED gchar *g_utf16_to_utf8(const gunichar2 *text, glong length, glong *read, glong *written, GError **error)
{
    static auto *const real = next<gchar *(const gunichar2 *, glong, glong *, glong *, GError **)>("g_utf16_to_utf8");
    return strike(Kind::utf16, CALLER) ? nullptr : real(text, length, read, written, error);
}

EXPORTED GDBusConnection *g_bus_get_sync(GBusType type, GCancellable *cancellable, GError **error)
{
    static auto *const real = next<GDBusConnection *(GBusType, GCancellable *, GError **)>("g_bus_get_sync");
    if (!strike(Kind::shared_bus, CALLER))
        return real(type, cancellable, error);
    fail(error);
    return nullptr;
}

EXPORTED gchar *g_dbus_address_get_for_bus_sync(GBusType type, GCancellable *cancellable, GError **error)
{
    static auto *const real = next<gchar *(GBusType, GCancellable *, GError **)>("g_dbus_address_get_for_bus_sync");
    if (!strike(Kind::bus_address, CALLER))
        return real(type, cancellable, error);
    fail(error);
    return nullptr;
}

EXPORTED GDBusConnection *g_dbus_connection_new_for_address_sync(const gchar *address, GDBusConnectionFlags flags,
                                                                 GDBusAuthObserver *observer, GCancellable *cancellable,
                                                                 GError **error)
{
    static auto *const real =
        next<GDBusConnection *(const gchar *, GDBusConnectionFlags, GDBusAuthObserver *, GCancellable *, GError **)>(
            "g_dbus_connection_new_for_address_sync");
    if (!strike(Kind::connection, CALLER))
        return real(address, flags, observer, cancellable, error);
    fail(error);
    return nullptr;
}

EXPORTED GDBusProxy *g_dbus_proxy_new_for_bus_sync(GBusType type, GDBusProxyFlags flags, GDBusInterfaceInfo *info,
                                                   const gchar *name, const gchar *path, const gchar *interface,
                                                   GCancellable *cancellable, GError **error)
{
    static auto *const real =
        next<GDBusProxy *(GBusType, GDBusProxyFlags, GDBusInterfaceInfo *, const gchar *, const gchar *, const gchar *,
                          GCancellable *, GError **)>("g_dbus_proxy_new_for_bus_sync");
    if (!strike(Kind::proxy, CALLER))
        return real(type, flags, info, name, path, interface, cancellable, error);
    fail(error);
    return nullptr;
}

EXPORTED GDBusProxy *g_dbus_proxy_new_sync(GDBusConnection *connection, GDBusProxyFlags flags, GDBusInterfaceInfo *info,
                                           const gchar *name, const gchar *path, const gchar *interface,
                                           GCancellable *cancellable, GError **error)
{
    static auto *const real =
        next<GDBusProxy *(GDBusConnection *, GDBusProxyFlags, GDBusInterfaceInfo *, const gchar *, const gchar *,
                          const gchar *, GCancellable *, GError **)>("g_dbus_proxy_new_sync");
    if (!strike(Kind::proxy, CALLER))
        return real(connection, flags, info, name, path, interface, cancellable, error);
    fail(error);
    return nullptr;
}

EXPORTED GVariant *g_dbus_proxy_call_sync(GDBusProxy *proxy, const gchar *method, GVariant *arguments,
                                          GDBusCallFlags flags, gint timeout, GCancellable *cancellable, GError **error)
{
    static auto *const real =
        next<GVariant *(GDBusProxy *, const gchar *, GVariant *, GDBusCallFlags, gint, GCancellable *, GError **)>(
            "g_dbus_proxy_call_sync");
    const auto due = strike(Kind::request, CALLER);
    if (due && due->effect == Effect::loses_the_bus)
        lose_the_bus(proxy);
    else if (due)
        service().misbehave(due->effect, method);
    GVariant *const answer = real(proxy, method, arguments, flags, timeout, cancellable, error);
    if (due && due->effect == Effect::loses_the_bus)
        await_the_end(proxy);
    if (due)
        service().behave(method);
    return answer;
}

EXPORTED void g_dbus_proxy_call(GDBusProxy *proxy, const gchar *method, GVariant *arguments, GDBusCallFlags flags,
                                gint timeout, GCancellable *cancellable, GAsyncReadyCallback callback, gpointer data)
{
    static auto *const real = next<void(GDBusProxy *, const gchar *, GVariant *, GDBusCallFlags, gint, GCancellable *,
                                        GAsyncReadyCallback, gpointer)>("g_dbus_proxy_call");
    const auto due = strike(Kind::post, CALLER);
    if (due)
        lose_the_bus(proxy);
    real(proxy, method, arguments, flags, timeout, cancellable, callback, data);
    if (due)
        await_the_end(proxy);
}
