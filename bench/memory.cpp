// By how much the resident set of an application grows while it receives signals, once it has settled.
#include "private_bus.h"
#include "rounds.h"
#include "signals.h"

#include <fstream>
#include <unistd.h>

namespace {

using namespace bench;
using benchmark::State;

constexpr int signals_at_once = 500; // as many as a client may have waiting, and more than a set ever sends
constexpr int until_settled = 10'000;
constexpr int in_all = 100'000;

/// In bytes; 0 when the kernel does not say.
long resident_set()
{
    std::ifstream statm("/proc/self/statm");
    long pages_in_all = 0, pages_resident = 0;
    statm >> pages_in_all >> pages_resident;
    return pages_resident * sysconf(_SC_PAGESIZE);
}

void grow(State &state)
{
    if (svc_pvr_service_init() != PS_SESSION_READY || svc_pvr_register_signal_cb(on_signal, nullptr) != PS_SUCCESS)
        state.SkipWithError("no session");
    long settled = 0, received = 0;
    for ([[maybe_unused]] auto _ : state) {
        if (!receive(signals_at_once))
            state.SkipWithError("the service sends no signals");
        received += signals_at_once;
        if (received == until_settled)
            settled = resident_set();
    }
    const long grown = resident_set() - settled;
    if (settled == 0)
        state.SkipWithError("the resident set was not measured");
    state.counters["bytes"] = static_cast<double>(grown);
    svc_pvr_service_destroy();
}

} // namespace

int main(int argc, char **argv)
{
    return measured([&] {
        // What is kept grows in every round; now and then the allocator takes another page for itself.
        const Options options = parse(argc, argv, 3);
        const PrivateBus bus;
        return run_rounds({{{"memory/growth", grow, in_all / signals_at_once}}}, options);
    });
}
