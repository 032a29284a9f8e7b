#include "stubs.h"

#include "interpose.h"

#include <cerrno>
#include <gio/gio.h>
#include <unistd.h>

namespace {

GVariant *stubbed_reply = nullptr;
bool is_access_stubbed = false;

} // namespace

EXPORTED GVariant *g_dbus_proxy_call_sync(GDBusProxy *proxy, const gchar *method_name, GVariant *parameters,
                                          GDBusCallFlags flags, gint timeout_msec, GCancellable *cancellable,
                                          GError **error)
{
    static const auto real = bench::next<decltype(g_dbus_proxy_call_sync)>("g_dbus_proxy_call_sync");
    if (stubbed_reply == nullptr)
        return real(proxy, method_name, parameters, flags, timeout_msec, cancellable, error);
    g_variant_unref(g_variant_ref_sink(parameters)); // it arrives floating, and is consumed
    return g_variant_ref(stubbed_reply);
}

EXPORTED int access(const char *name, int type) noexcept
{
    static const auto real = bench::next<int(const char *, int)>("access");
    if (!is_access_stubbed)
        return real(name, type);
    errno = ENOENT;
    return -1;
}

namespace bench {

BusStub::BusStub() { stubbed_reply = g_variant_ref_sink(g_variant_new("(i)", 1)); }

BusStub::~BusStub()
{
    g_variant_unref(stubbed_reply);
    stubbed_reply = nullptr;
}

AccessStub::AccessStub() { is_access_stubbed = true; }

AccessStub::~AccessStub() { is_access_stubbed = false; }

} // namespace bench
