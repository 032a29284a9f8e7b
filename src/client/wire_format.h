// What a remote method takes and gives back, as GVariant spells it: worked out by the compiler from the
// type of the generated function that calls it.
#pragma once

#include <array>
#include <cstddef>
#include <gio/gio.h>

namespace pvr {

/// How many arguments a request has at most.
inline constexpr std::size_t most_sent = 8;

namespace detail {

// The type code of a generated function's parameter, by which way it goes; 0 for those that stay here.
// clang-format off
template <typename Parameter> inline constexpr char sent = 0;
template <> inline constexpr char sent<gint>          = 'i';
template <> inline constexpr char sent<guint>         = 'u';
template <> inline constexpr char sent<guint64>       = 't';
template <> inline constexpr char sent<const gchar *> = 's';

template <typename Parameter> inline constexpr char received = 0;
template <> inline constexpr char received<gint *>      = 'i';
template <> inline constexpr char received<gint64 *>    = 'x';
template <> inline constexpr char received<guint64 *>   = 't';
template <> inline constexpr char received<gchar **>    = 's';
template <> inline constexpr char received<GVariant **> = '?';
// clang-format on

template <std::size_t Size>
consteval std::array<char, Size + 3> spelled(const std::array<char, Size> &codes)
{
    std::array<char, Size + 3> text{'('};
    std::size_t end = 1;
    for (const char code : codes)
        if (code != 0)
            text[end++] = code;
    text[end] = ')';
    return text;
}

template <typename Function>
struct Formats;

template <typename Outcome, typename... Parameters>
struct Formats<Outcome(Parameters...)> {
    static_assert((std::size_t{sent<Parameters> != 0} + ...) <= most_sent);
    static constexpr auto request = spelled(std::array{sent<Parameters>...});
    static constexpr auto reply = spelled(std::array{received<Parameters>...});
    static constexpr bool has_container = ((received<Parameters> == '?') || ...);
};

} // namespace detail

/// A remote method: its name on the wire, and the formats of its arguments and of its reply.
template <typename Function>
struct Remote {
    const char *name;
    const char *request = detail::Formats<Function>::request.data();
    const char *reply = detail::Formats<Function>::reply.data();

    consteval explicit(false) Remote(const char *method) requires(!detail::Formats<Function>::has_container)
        : name(method)
    {
    }
    consteval Remote(const char *method, const char *reply_format) requires detail::Formats<Function>::has_container
        : name(method),
          reply(reply_format)
    {
    }
};

} // namespace pvr
