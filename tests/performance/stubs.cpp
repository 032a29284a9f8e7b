#include "performance/stubs.h"

#include <ca_service.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <dlog.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <system_info.h>
#include <unistd.h>

#include "performance/heap.h"
#include "pvr_gdbus_generated.h"

using performance::Uncounted;

namespace {

performance::SignalHandler *connected_handler = nullptr;

[[noreturn]] void give_up(const char *why)
{
    std::fprintf(stderr, "performance: %s\n", why);
    std::exit(2);
}

template <typename Function>
Function *next(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

/// A value of a type: 1 for a number, three elements in a list.
GVariant *sample(const GVariantType *type)
{
    if (g_variant_type_is_array(type) != FALSE) {
        const GVariantType *const element = g_variant_type_element(type);
        GVariant *const elements[] = {sample(element), sample(element), sample(element)};
        return g_variant_new_array(element, elements, 3);
    }
    if (g_variant_type_is_tuple(type) != FALSE) {
        GVariantBuilder builder;
        g_variant_builder_init(&builder, type);
        for (const GVariantType *item = g_variant_type_first(type); item != nullptr; item = g_variant_type_next(item))
            g_variant_builder_add_value(&builder, sample(item));
        return g_variant_builder_end(&builder);
    }
    switch (*g_variant_type_peek_string(type)) {
    case 'i':
        return g_variant_new_int32(1);
    case 'u':
        return g_variant_new_uint32(1);
    case 't':
        return g_variant_new_uint64(1);
    case 'x':
        return g_variant_new_int64(1);
    case 's':
        return g_variant_new_string("a text of the service");
    default:
        give_up("the interface has a type that nothing is known to answer for");
    }
}

/// What the service answers, by the description of its interface.
GVariant *answer_of(const char *method)
{
    if (std::string_view(method) == "get_channel_info") // what its variants hold is not described
        return g_variant_new_parsed(
            "(@a(v) [(<1>,), (<2>,), (<uint32 3>,), (<uint32 4>,), (<'channel'>,), (<'title'>,)],"
            " 1)");
    const GDBusMethodInfo *const info = g_dbus_interface_info_lookup_method(org_vexan_tv_pvr_interface_info(), method);
    if (info == nullptr)
        give_up("a method was called that the interface does not have");
    std::string type("(");
    for (GDBusArgInfo **argument = info->out_args; argument != nullptr && *argument != nullptr; ++argument)
        type += (*argument)->signature;
    type += ')';
    return sample(G_VARIANT_TYPE(type.c_str()));
}

/// One end of a pair of sockets: what is sent waits at the other end for ever.
GDBusConnection *make_connection()
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        give_up("no sockets for a connection");
    GSocket *const socket = g_socket_new_from_fd(ends[0], nullptr);
    GSocketConnection *const stream = g_socket_connection_factory_create_connection(socket);
    GDBusConnection *const connection = g_dbus_connection_new_sync(
        G_IO_STREAM(stream), nullptr, G_DBUS_CONNECTION_FLAGS_NONE, nullptr, nullptr, nullptr);
    if (connection == nullptr)
        give_up("no connection");
    return connection;
}

GDBusConnection *connection()
{
    static GDBusConnection *const only = make_connection();
    return only;
}

} // namespace

namespace performance {

SignalHandler *signal_handler() noexcept { return connected_handler; }

} // namespace performance

// The program's own definitions go before those of the libraries.
extern "C" {

GDBusConnection *g_bus_get_sync(GBusType, GCancellable *, GError **)
{
    const Uncounted stub;
    return G_DBUS_CONNECTION(g_object_ref(connection()));
}

GDBusProxy *g_dbus_proxy_new_for_bus_sync(GBusType, GDBusProxyFlags, GDBusInterfaceInfo *info, const gchar *,
                                          const gchar *path, const gchar *interface, GCancellable *, GError **error)
{
    const Uncounted stub;
    constexpr auto without_traffic = static_cast<GDBusProxyFlags>(G_DBUS_PROXY_FLAGS_DO_NOT_LOAD_PROPERTIES |
                                                                  G_DBUS_PROXY_FLAGS_DO_NOT_CONNECT_SIGNALS);
    return g_dbus_proxy_new_sync(connection(), without_traffic, info, nullptr, path, interface, nullptr, error);
}

GVariant *g_dbus_proxy_call_sync(GDBusProxy *, const gchar *method, GVariant *parameters, GDBusCallFlags, gint,
                                 GCancellable *, GError **)
{
    const Uncounted stub;
    g_variant_unref(g_variant_ref_sink(parameters)); // it arrives floating, and is consumed
    return g_variant_ref_sink(answer_of(method));
}

void g_dbus_proxy_call(GDBusProxy *, const gchar *, GVariant *parameters, GDBusCallFlags, gint, GCancellable *,
                       GAsyncReadyCallback, gpointer)
{
    const Uncounted stub;
    g_variant_unref(g_variant_ref_sink(parameters));
}

gulong g_signal_connect_data(gpointer instance, const gchar *signal, GCallback handler, gpointer data,
                             GClosureNotify destroy, GConnectFlags flags)
{
    static const auto real = next<decltype(g_signal_connect_data)>("g_signal_connect_data");
    const Uncounted stub;
    if (std::string_view(signal) == "g-signal")
        connected_handler = reinterpret_cast<performance::SignalHandler *>(handler);
    return real(instance, signal, handler, data, destroy, flags);
}

int access(const char *name, int type) noexcept
{
    static const auto real = next<int(const char *, int)>("access");
    if (std::string_view(name) != "/tmp/PVR_SERVICE_API_IS_SUPPORT_PVR")
        return real(name, type);
    errno = ENOENT;
    return -1;
}

} // extern "C"

// The platform keeps no line, and its product records.
int __dlog_print(int, int, const char *, const char *, ...) noexcept { return 0; }

int system_info_get_custom_bool(const char *, bool *value)
{
    *value = true;
    return 0;
}

int system_info_get_custom_int(const char *, int *value)
{
    *value = 1;
    return 0;
}

int system_info_get_value_int(int, int *value)
{
    *value = 1;
    return 0;
}

namespace CA_API {
namespace {

template <typename T>
bool is_answered(T *answer, T value)
{
    *answer = value;
    return true;
}

class Stub final : public CAService {
    void Unused0() override {}
    void Unused1() override {}
    bool IsFileExceededRetentionLimit(std::string &, bool *exceeded) override { return is_answered(exceeded, true); }
    bool GetCIThumbType(std::string &, int *type) override { return is_answered(type, 1); }
    bool GetContentInfo(std::string &, int *info_type, unsigned char *play_count) override
    {
        return is_answered(info_type, 1) && is_answered(play_count, static_cast<unsigned char>(1));
    }
    bool GetExpiredContentSections(std::string &, std::vector<std::pair<int, int>> &sections) override
    {
        const Uncounted stub;
        sections = {{1, 2}, {3, 4}, {5, 6}};
        return true;
    }
    bool IsBlockedByParentalControl(std::string &, bool *blocked) override { return is_answered(blocked, true); }
    bool CheckThumbnailValidation(std::string &, int *, bool *valid) override { return is_answered(valid, true); }
};

} // namespace

CAService *CAService::CAPVRInstance()
{
    static Stub stub;
    return &stub;
}

} // namespace CA_API
