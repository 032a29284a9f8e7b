#include "signals.h"

#include "interpose.h"

#include <cstdio>
#include <string_view>

namespace {

using Handler = void(GDBusProxy *, const char *, const char *, GVariant *, void *);

Handler *library_handler = nullptr;

} // namespace

/// The library's handler is its own secret: it is seen when it is connected.
EXPORTED gulong g_signal_connect_data(gpointer instance, const gchar *signal, GCallback handler, gpointer data,
                                      GClosureNotify destroy, GConnectFlags flags)
{
    static const auto real = bench::next<decltype(g_signal_connect_data)>("g_signal_connect_data");
    if (std::string_view(signal) == "g-signal")
        library_handler = reinterpret_cast<Handler *>(handler);
    return real(instance, signal, handler, data, destroy, flags);
}

namespace bench {

std::string record_digits()
{
    std::string text;
    for (std::size_t i = 0; i < sizeof(pvr_service_signal); ++i) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned>(i & 0xff));
        text += pair;
    }
    return text;
}

pvr::OwnedVariant signal_parameters()
{
    return pvr::OwnedVariant(
        g_variant_ref_sink(g_variant_new("(is)", PS_SIGNAL_TYPE_THUMB_DONE, record_digits().c_str())));
}

void hand_to_library(GVariant *parameters)
{
    library_handler(nullptr, ":1.1", "send_pvr_signal_to_apps", parameters, nullptr);
}

bool receive(int count)
{
    delivered = 0;
    const pvr::OwnedConnection bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    const pvr::OwnedVariant reply(g_dbus_connection_call_sync(
        bus.get(), "org.vexan.tv.pvr.server", "/org/vexan/tv/pvr", "org.vexan.tv.pvr", "format",
        g_variant_new("(ii)", count, 0), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    while (reply && delivered < count)
        g_main_context_iteration(nullptr, TRUE);
    return static_cast<bool>(reply);
}

} // namespace bench
