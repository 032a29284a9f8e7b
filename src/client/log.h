// The library's log lines. A line is an expression that yields where it stands; the macros are
// only the shapes of line that exist, and nothing is formatted before the platform's logger
// has decided to keep a line.
#pragma once

#include "client/identity.h"

#include <dlog.h>

namespace pvr {

/// The place a log line names: a call hands its own on to what works on its behalf.
struct Here {
    const char *function;
    int line;

    Here(const char *function_name = __builtin_FUNCTION(), int line_number = __builtin_LINE()) noexcept
        : function(function_name), line(line_number)
    {
    }
};

namespace log {

enum Priority { debug = 3, info = 4, error = 6 };

inline constexpr int main_buffer = 0;
inline constexpr char tag[] = "PVR_SVC_API";
inline constexpr char version[] = "10.8.1";

/// Never defined: stands in an unevaluated operand, where -Wformat reads a line's text and arguments.
int checked(const char *text, ...) __attribute__((format(printf, 1, 2)));

// The text was checked where it is written; here it is on its way through.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

/// Forwards a line as it is. One instance per list of argument types, shared by all lines of that list.
template <typename... Arguments>
[[gnu::noinline]] Here plain(const char *source, Priority priority, const char *format, Here here,
                             Arguments... arguments) noexcept
{
    __dlog_print(main_buffer, priority, tag, format, source, here.function, here.line, version, arguments...);
    return here;
}

/// Forwards a line that names the calling process ("My master").
template <typename... Arguments>
[[gnu::noinline]] Here of_master(const char *source, Priority priority, const char *format, Here here,
                                 Arguments... arguments) noexcept
{
    const Identity &master = identity();
    __dlog_print(main_buffer, priority, tag, format, source, here.function, here.line, version, master.g_thread_id,
                 master.g_thread_name, arguments...);
    return here;
}

#pragma GCC diagnostic pop

} // namespace log
} // namespace pvr

// clang-format off
// The source file that lines name, wherever they stand; the conditional-access queries set their own.
#ifndef PVR_LOG_SOURCE
#define PVR_LOG_SOURCE "pvr_service_api.cpp"
#endif

#define PVR_LOG_LINE(forward, here, priority, head, text, ...)                                       \
    (static_cast<void>(sizeof(::pvr::log::checked(text __VA_OPT__(, ) __VA_ARGS__))),                \
     ::pvr::log::forward(PVR_LOG_SOURCE, ::pvr::log::priority,                                       \
                         "%s: %s(%d) > [PVR][API]" head text, here __VA_OPT__(, ) __VA_ARGS__))

// Lines that name the calling process.      forward    where           priority  head
#define ENTRY(...)             PVR_LOG_LINE(of_master, ::pvr::Here(),   error, "[EST][%s]My master:[%d][%s]", __VA_ARGS__)
#define ENTRY_AT(here, ...)    PVR_LOG_LINE(of_master, here,            error, "[EST][%s]My master:[%d][%s]", __VA_ARGS__)
#define FAILURE(...)           PVR_LOG_LINE(of_master, ::pvr::Here(),   error, "[EST][%s]My master:[%d][%s]", __VA_ARGS__)
#define FAILURE_AT(here, ...)  PVR_LOG_LINE(of_master, here,            error, "[EST][%s]My master:[%d][%s]", __VA_ARGS__)
#define EXCEPTION(...)         PVR_LOG_LINE(of_master, ::pvr::Here(),   error, "[EXP][%s]My master:[%d][%s]", __VA_ARGS__)
#define INFO(...)              PVR_LOG_LINE(of_master, ::pvr::Here(),   info,  "[%s]My master:[%d][%s]",      __VA_ARGS__)
#define INFO_AT(here, ...)     PVR_LOG_LINE(of_master, here,            info,  "[%s]My master:[%d][%s]",      __VA_ARGS__)

// Lines that do not.
#define PLAIN_ENTRY(...)       PVR_LOG_LINE(plain,     ::pvr::Here(),   error, "[EST][%s]",                   __VA_ARGS__)
#define PLAIN_FAILURE(...)     PVR_LOG_LINE(plain,     ::pvr::Here(),   error, "[EST][%s]",                   __VA_ARGS__)
#define PLAIN_FAILURE_AT(here, ...) PVR_LOG_LINE(plain, here,           error, "[EST][%s]",                   __VA_ARGS__)
#define PLAIN_INFO(...)        PVR_LOG_LINE(plain,     ::pvr::Here(),   info,  "[%s]",                        __VA_ARGS__)
#define PLAIN_INFO_AT(here, ...) PVR_LOG_LINE(plain,   here,            info,  "[%s]",                        __VA_ARGS__)
#define DETAIL(...)            PVR_LOG_LINE(plain,     ::pvr::Here(),   debug, "[%s]",                        __VA_ARGS__)
// clang-format on
