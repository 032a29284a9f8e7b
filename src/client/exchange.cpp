#include "client/exchange.h"

#include "client/owned.h"
#include "client/wire_format.h"

#include <algorithm>
#include <cstdarg>
#include <string_view>

namespace pvr {
namespace {

constexpr int bus_default = -1; // of the time-out

/// Says what GDBus says of a proxy that was told the types of its interface.
void report_type(GError **error, const char *method, GVariant *value, std::string_view format) noexcept
{
    char expected[32] = {}; // a format without its marks is a type
    format = format.substr(0, sizeof expected - 1);
    std::copy_if(format.begin(), format.end(), expected, [](char code) { return code != '@'; });
    g_set_error(error, G_IO_ERROR, G_IO_ERROR_INVALID_ARGUMENT, "Method “%s” returned type “%s”, but expected “%s”",
                method, g_variant_get_type_string(value), expected);
}

/// The arguments of a request, by the codes between its parentheses. Each is made by itself: g_variant_new_va() would
/// read the format once per argument, and build the tuple's type beside the tuple.
GVariant *packed(std::string_view request, va_list *arguments) noexcept
{
    // NOLINTBEGIN(clang-analyzer-valist.Uninitialized): it does not see va_start() through the pointer.
    GVariant *members[most_sent];
    std::size_t count = 0;
    for (const char code : request.substr(1, request.size() - 2)) {
        GVariant *&member = members[count++];
        switch (code) {
        case 'i':
            member = g_variant_new_int32(va_arg(*arguments, gint32));
            break;
        case 'u':
            member = g_variant_new_uint32(va_arg(*arguments, guint32));
            break;
        case 't':
            member = g_variant_new_uint64(va_arg(*arguments, guint64));
            break;
        default:
            member = g_variant_new_string(va_arg(*arguments, const char *));
        }
    }
    // NOLINTEND(clang-analyzer-valist.Uninitialized)
    return g_variant_new_tuple(members, count);
}

} // namespace

bool exchange(GDBusProxy *proxy, const char *method, const char *request, const char *reply, GError **error,
              ...) noexcept
{
    va_list arguments;
    va_start(arguments, error);
    GVariant *sent = packed(request, &arguments);
    const OwnedVariant answer(
        g_dbus_proxy_call_sync(proxy, method, sent, G_DBUS_CALL_FLAGS_NONE, bus_default, nullptr, error));
    const bool is_of_type = answer && g_variant_check_format_string(answer.get(), reply, FALSE) != FALSE;
    if (is_of_type)
        g_variant_get_va(answer.get(), reply, nullptr, &arguments);
    else if (answer)
        report_type(error, method, answer.get(), reply);
    va_end(arguments);
    return is_of_type;
}

void send(GDBusProxy *proxy, const char *method, const char *request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    GVariant *sent = packed(request, &arguments);
    va_end(arguments);
    g_dbus_proxy_call(proxy, method, sent, G_DBUS_CALL_FLAGS_NONE, bus_default, nullptr, nullptr, nullptr);
}

} // namespace pvr
