#include "events.h"

#include "events/hexadecimal.h"
#include "pvr_service_api.h"
#include "signals.h"

#include <array>
#include <cstdint>
#include <ctime>
#include <stdexcept>
#include <string>

namespace bench {
namespace {

using benchmark::State;

constexpr std::size_t record_size = sizeof(pvr_service_signal);
constexpr int signals_per_round = 100;

void on_any_signal(GDBusProxy *, const char *, const char *, GVariant *, void *) { ++delivered; }

double now(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

/// CPU time of the whole process, in ns.
double cpu_time() { return now(CLOCK_PROCESS_CPUTIME_ID); }

/// In ns.
double elapsed_time() { return now(CLOCK_MONOTONIC); }

/// Receives signals, and tells what one took by a clock.
template <double (*clock)()>
void deliver(State &state, const char *counter)
{
    for ([[maybe_unused]] auto _ : state) {
        const double before = clock();
        if (!receive(signals_per_round))
            state.SkipWithError("the service sends no signals");
        state.counters[counter] = (clock() - before) / signals_per_round;
    }
}

/// The library's callback beside a handler that does nothing. No other proxy receives the signals.
Group receivers(Callers &callers, const std::string &name, benchmark::IterationCount iterations,
                void (*received)(State &state))
{
    const auto library = [&callers, received](State &state) {
        place_client(Placement::one_cpu);
        callers.release();
        if (svc_pvr_service_init() != PS_SESSION_READY)
            throw std::runtime_error("no session");
        svc_pvr_register_signal_cb(on_signal, nullptr);
        received(state);
        svc_pvr_unregister_signal_cb(on_signal);
        callers.release();
    };
    const auto bare = [&callers, received](State &state) {
        place_client(Placement::one_cpu);
        callers.release();
        {
            const pvr::OwnedProxy proxy = make_bare_proxy();
            g_signal_connect(proxy.get(), "g-signal", G_CALLBACK(on_any_signal), nullptr);
            received(state);
        }
        callers.release();
    };
    return {{name + "_library", library, iterations}, {name + "_bare", bare, iterations}};
}

} // namespace

Group event_handling(Callers &callers)
{
    const auto handler = [&callers](State &state) {
        callers.prepare(Placement::one_cpu);
        svc_pvr_register_signal_cb(on_signal, nullptr);
        const pvr::OwnedVariant value = signal_parameters();
        delivered = 0;
        for ([[maybe_unused]] auto _ : state)
            hand_to_library(value.get());
        if (delivered != state.iterations())
            state.SkipWithError("the callback was not called");
        svc_pvr_unregister_signal_cb(on_signal);
    };
    const auto unpacking = [](State &state) {
        place_client(Placement::one_cpu);
        const pvr::OwnedVariant value = signal_parameters();
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
        const std::string text = record_digits();
        std::array<std::uint8_t, record_size> bytes;
        for ([[maybe_unused]] auto _ : state) {
            pvr::decode_hexadecimal(bytes.data(), bytes.size(), text.data());
            benchmark::DoNotOptimize(bytes);
        }
    };
    const auto scanning = [](State &state) {
        place_client(Placement::one_cpu);
        const std::string text = record_digits();
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
    return receivers(callers, "events/delivery", 1, [](State &state) { deliver<cpu_time>(state, "cpu_ns"); });
}

Group event_bursts(Callers &callers)
{
    return receivers(callers, "events/burst", 1, [](State &state) { deliver<elapsed_time>(state, "elapsed_ns"); });
}

Group event_latency(Callers &callers)
{
    return receivers(callers, "events/latency", 20, [](State &state) {
        for ([[maybe_unused]] auto _ : state)
            if (!receive(1))
                state.SkipWithError("the service sends no signals");
    });
}

} // namespace bench
