#include "events.h"

#include "events/hexadecimal.h"
#include "interpose.h"
#include "pvr_service_api.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <stdexcept>
#include <string>
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
namespace {

using benchmark::State;

constexpr std::size_t record_size = sizeof(pvr_service_signal);
constexpr int signals_per_round = 100;

int delivered = 0;

void on_signal(pvr_service_signal, void *) { ++delivered; }
void on_any_signal(GDBusProxy *, const char *, const char *, GVariant *, void *) { ++delivered; }

std::string digits()
{
    std::string text;
    for (std::size_t i = 0; i < record_size; ++i) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned>(i & 0xff));
        text += pair;
    }
    return text;
}

pvr::OwnedVariant parameters()
{
    return pvr::OwnedVariant(g_variant_ref_sink(g_variant_new("(is)", PS_SIGNAL_TYPE_THUMB_DONE, digits().c_str())));
}

/// CPU time of the whole process, in ns.
double cpu_time()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

/// Has the service send signals, and runs the main context until all have been handled.
void deliver(State &state)
{
    const pvr::OwnedConnection bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    for ([[maybe_unused]] auto _ : state) {
        delivered = 0;
        const double before = cpu_time();
        const pvr::OwnedVariant reply(g_dbus_connection_call_sync(
            bus.get(), "org.vexan.tv.pvr.server", "/org/vexan/tv/pvr", "org.vexan.tv.pvr", "format",
            g_variant_new("(ii)", signals_per_round, 0), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
        if (!reply)
            state.SkipWithError("the service sends no signals");
        while (reply && delivered < signals_per_round)
            g_main_context_iteration(nullptr, TRUE);
        state.counters["cpu_ns"] = (cpu_time() - before) / signals_per_round;
    }
}

} // namespace

Group event_handling(Callers &callers)
{
    const auto handler = [&callers](State &state) {
        callers.prepare(Placement::one_cpu);
        svc_pvr_register_signal_cb(on_signal, nullptr);
        const pvr::OwnedVariant value = parameters();
        delivered = 0;
        for ([[maybe_unused]] auto _ : state)
            library_handler(nullptr, ":1.1", "send_pvr_signal_to_apps", value.get(), nullptr);
        if (delivered != state.iterations())
            state.SkipWithError("the callback was not called");
        svc_pvr_unregister_signal_cb(on_signal);
    };
    const auto unpacking = [](State &state) {
        place_client(Placement::one_cpu);
        const pvr::OwnedVariant value = parameters();
        for ([[maybe_unused]] auto _ : state) {
            int type = 0;
            char *text = nullptr;
            g_variant_get(value.get(), "(is)", &type, &text);
            benchmark::DoNotOptimize(text);
            g_free(text);
        }
    };
    return {{"events/handler", handler, 1000}, {"events/unpacking", unpacking, 1000}};
}

Group event_decoding()
{
    const auto decoding = [](State &state) {
        place_client(Placement::one_cpu);
        const std::string text = digits();
        std::array<std::uint8_t, record_size> bytes;
        for ([[maybe_unused]] auto _ : state) {
            pvr::decode_hexadecimal(bytes.data(), bytes.size(), text.data());
            benchmark::DoNotOptimize(bytes);
        }
    };
    const auto scanning = [](State &state) {
        place_client(Placement::one_cpu);
        const std::string text = digits();
        std::array<std::uint8_t, record_size> bytes;
        for ([[maybe_unused]] auto _ : state) {
            for (std::size_t i = 0; i < bytes.size(); ++i) {
                unsigned value = 0;
                std::sscanf(text.data() + 2 * i, "%02x", &value);
                bytes[i] = static_cast<std::uint8_t>(value);
            }
            benchmark::DoNotOptimize(bytes);
        }
    };
    return {{"events/decoding", decoding, 200}, {"events/scanning", scanning, 5}};
}

Group event_delivery(Callers &callers)
{
    const auto library = [&callers](State &state) {
        place_client(Placement::one_cpu);
        callers.release(); // no other proxy receives the signals
        if (svc_pvr_service_init() != PS_SESSION_READY)
            throw std::runtime_error("no session");
        svc_pvr_register_signal_cb(on_signal, nullptr);
        deliver(state);
        svc_pvr_unregister_signal_cb(on_signal);
        callers.release();
    };
    const auto bare = [&callers](State &state) {
        place_client(Placement::one_cpu);
        callers.release();
        {
            const pvr::OwnedProxy proxy = make_bare_proxy();
            g_signal_connect(proxy.get(), "g-signal", G_CALLBACK(on_any_signal), nullptr);
            deliver(state);
        }
        callers.release();
    };
    return {{"events/delivery_library", library, 1}, {"events/delivery_bare", bare, 1}};
}

} // namespace bench
