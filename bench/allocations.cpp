// How many heap blocks a call to the service takes beside those that GDBus takes to carry it, through
// the library and without it; and how many a signal and reading a side file
// take.
#include "callers.h"
#include "interpose.h"
#include "private_bus.h"
#include "rounds.h"
#include "side_files.h"
#include "signals.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <system_info.h>

namespace {

thread_local long blocks = 0;
bool is_platform_stubbed = false;

} // namespace

// Everything in the process allocates through these; the C library's own stand behind them.
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);
}

EXPORTED void *malloc(size_t size) noexcept
{
    ++blocks;
    return __libc_malloc(size);
}

EXPORTED void *calloc(size_t count, size_t size) noexcept
{
    ++blocks;
    return __libc_calloc(count, size);
}

EXPORTED void *realloc(void *block, size_t size) noexcept
{
    ++blocks;
    return __libc_realloc(block, size);
}

/// Takes back what was counted meanwhile: how often GDBus goes round its main loop in a call is a matter
/// of timing, and each time costs it blocks.
EXPORTED GVariant *g_dbus_proxy_call_sync(GDBusProxy *proxy, const gchar *method_name, GVariant *parameters,
                                          GDBusCallFlags flags, gint timeout_msec, GCancellable *cancellable,
                                          GError **error)
{
    static const auto real = bench::next<decltype(g_dbus_proxy_call_sync)>("g_dbus_proxy_call_sync");
    const long before = blocks;
    GVariant *reply = real(proxy, method_name, parameters, flags, timeout_msec, cancellable, error);
    blocks = before;
    return reply;
}

/// Answers the support check's question in place of the platform, whose answer may allocate.
EXPORTED int system_info_get_custom_bool(const char *key, bool *value)
{
    static const auto real = bench::next<decltype(system_info_get_custom_bool)>("system_info_get_custom_bool");
    if (!is_platform_stubbed)
        return real(key, value);
    *value = true;
    return 0;
}

namespace {

using namespace bench;
using benchmark::State;

constexpr int default_rounds = 20;
constexpr int calls_per_round = 100;

template <typename Function>
void count(State &state, Callers &callers, Function call)
{
    callers.prepare(Placement::one_cpu);
    bool succeeded = true;
    const long before = blocks;
    for ([[maybe_unused]] auto _ : state)
        succeeded &= call();
    const long counted = blocks - before;
    state.counters["allocations"] = static_cast<double>(counted) / static_cast<double>(calls_per_round);
    if (!succeeded)
        state.SkipWithError("a call failed");
    if (counted < calls_per_round) // a call packs its arguments at least
        state.SkipWithError("the allocations were not seen");
}

/// What the library's handler takes of a signal that it is handed, and delivers.
void count_of_signals(State &state, Callers &callers)
{
    callers.prepare(Placement::one_cpu);
    svc_pvr_register_signal_cb(on_signal, nullptr);
    const pvr::OwnedVariant parameters = signal_parameters();
    delivered = 0;
    const long before = blocks;
    for ([[maybe_unused]] auto _ : state)
        hand_to_library(parameters.get());
    state.counters["allocations"] = static_cast<double>(blocks - before) / static_cast<double>(calls_per_round);
    if (delivered != calls_per_round)
        state.SkipWithError("the callback was not called");
    svc_pvr_unregister_signal_cb(on_signal);
}

/// What reading a side file takes.
void count_of_reading(State &state, const SideFiles &files, void (SideFiles::*read)() const)
{
    place_client(Placement::one_cpu);
    is_platform_stubbed = true;
    (files.*read)();
    const long before = blocks;
    for ([[maybe_unused]] auto _ : state)
        (files.*read)();
    state.counters["allocations"] = static_cast<double>(blocks - before) / static_cast<double>(calls_per_round);
    is_platform_stubbed = false;
}

int run(const Options &options)
{
    const PrivateBus bus;
    Callers callers;
    // Keeps GLib's descriptions of both types alive: a call makes them anew whenever the other thread
    // happens to hold no message with them.
    const pvr::OwnedVariant request(g_variant_ref_sink(g_variant_new("(isi)", handle, uri, start_position)));
    const pvr::OwnedVariant reply(g_variant_ref_sink(g_variant_new("(i)", 1)));
    const auto library = [&callers](State &state) {
        is_platform_stubbed = true;
        count(state, callers, library_play_start);
        is_platform_stubbed = false;
    };
    const auto library_and_platform = [&callers](State &state) { count(state, callers, library_play_start); };
    const auto bare = [&callers](State &state) {
        count(state, callers, [&] { return bare_play_start(callers.bare()); });
    };
    const auto of_signals = [&callers](State &state) { count_of_signals(state, callers); };
    const SideFiles files;
    const auto of_reading = [&files](auto read) {
        return [&files, read](State &state) { count_of_reading(state, files, read); };
    };
    return run_rounds({{{"allocations/current", of_reading(&SideFiles::read_current), calls_per_round},
                        {"allocations/older", of_reading(&SideFiles::read_older), calls_per_round},
                        {"allocations/fingerprint", of_reading(&SideFiles::read_fingerprint), calls_per_round}},
                       {{"allocations/signal", of_signals, calls_per_round}},
                       {{"allocations/library", library, calls_per_round},
                        {"allocations/library_and_platform", library_and_platform, calls_per_round},
                        {"allocations/bare", bare, calls_per_round}}},
                      options);
}

} // namespace

int main(int argc, char **argv)
{
    const char *slices = std::getenv("G_SLICE");
    if (slices == nullptr || std::string_view(slices) != "always-malloc") {
        std::fputs("set G_SLICE=always-malloc: GLib's own allocator would hide most blocks\n", stderr);
        return 2;
    }
    return measured([&] { return run(parse(argc, argv, default_rounds)); });
}
