#include "callers.h"

#include "pvr_service_api.h"

#include <stdexcept>

namespace bench {
namespace {

constexpr int warm_up_calls = 3;

} // namespace

bool library_play_start() noexcept { return svc_pvr_play_start(handle, uri, start_position) == PS_SUCCESS; }

bool bare_play_start(GDBusProxy *proxy) noexcept
{
    int result = 0;
    GVariant *reply = g_dbus_proxy_call_sync(proxy, "play_start", g_variant_new("(isi)", handle, uri, start_position),
                                             G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    if (reply == nullptr)
        return false;
    g_variant_get(reply, "(i)", &result);
    g_variant_unref(reply);
    return result == 1;
}

pvr::OwnedProxy make_bare_proxy() noexcept
{
    return pvr::OwnedProxy(g_dbus_proxy_new_for_bus_sync(G_BUS_TYPE_SYSTEM, G_DBUS_PROXY_FLAGS_NONE, nullptr,
                                                         "org.vexan.tv.pvr.server", "/org/vexan/tv/pvr",
                                                         "org.vexan.tv.pvr", nullptr, nullptr));
}

Callers::Callers() : connection_(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr))
{
    if (!connection_)
        throw std::runtime_error("no connection to the private bus");
}

Callers::~Callers() { release(); }

void Callers::prepare(Placement placement)
{
    place_client(placement);
    if (!bare_)
        bare_ = make_bare_proxy();
    if (!bare_ || svc_pvr_service_init() != PS_SESSION_READY)
        throw std::runtime_error("no proxy or no session");
    for (int call = 0; call < warm_up_calls; ++call) {
        if (!bare_play_start(bare_.get()) || !library_play_start())
            throw std::runtime_error("a call failed while warming up");
    }
}

void Callers::release() noexcept
{
    svc_pvr_service_destroy();
    bare_ = pvr::OwnedProxy();
    drain_main_context();
}

void drain_main_context() noexcept
{
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
}

} // namespace bench
