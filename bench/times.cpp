// How long a call, the frame alone, a dropped log line, a session, signals and side files take, each beside
// what it is compared with.
#include "callers.h"
#include "events.h"
#include "other_callers.h"
#include "placement.h"
#include "private_bus.h"
#include "rounds.h"
#include "side_files.h"
#include "stubs.h"

#include "client/log.h"
#include "pvr_gdbus_generated.h"
#include "pvr_service_api.h"

#include <memory>
#include <string>
#include <vector>

namespace {

using namespace bench;
using benchmark::State;

constexpr int default_rounds = 1500;

/// Runs the measured loop; a call that fails ends the measuring.
template <typename Function>
void measure(State &state, Function call)
{
    bool succeeded = true;
    for ([[maybe_unused]] auto _ : state)
        succeeded &= call();
    if (!succeeded)
        state.SkipWithError("a call failed");
}

/// One call through to the service and back, each on the connection that its library made.
Group calls(Callers &callers, Placement placement, const std::string &name)
{
    const auto sd_bus = [placement, caller = std::make_shared<SdBusCaller>()](State &state) {
        place_client(placement);
        measure(state, [&] { return caller->play_start(); });
    };
    const auto libdbus = [placement, caller = std::make_shared<LibdbusCaller>()](State &state) {
        place_client(placement);
        measure(state, [&] { return caller->play_start(); });
    };
    const auto library = [&callers, placement](State &state) {
        callers.prepare(placement);
        measure(state, library_play_start);
    };
    const auto bare = [&callers, placement](State &state) {
        callers.prepare(placement);
        measure(state, [&] { return bare_play_start(callers.bare()); });
    };
    return {{name + "/library", library, 30},
            {name + "/bare", bare, 30},
            {name + "/sd_bus", sd_bus, 30},
            {name + "/libdbus", libdbus, 30}};
}

bool pack_and_unpack(GDBusProxy *proxy)
{
    int result = 0;
    return org_vexan_tv_pvr_call_play_start_sync(reinterpret_cast<OrgVexanTvPvr *>(proxy), handle, uri, start_position,
                                                 &result, nullptr, nullptr) != FALSE &&
           result == 1;
}

/// What the library does around the bus, without the bus.
Group frames(Callers &callers)
{
    const auto frame = [&callers](State &state) {
        callers.prepare(Placement::one_cpu);
        const BusStub stub;
        library_play_start();
        measure(state, library_play_start);
    };
    const auto frame_without_access = [&callers](State &state) {
        callers.prepare(Placement::one_cpu);
        const BusStub stub;
        const AccessStub no_file;
        library_play_start();
        measure(state, library_play_start);
    };
    const auto packing = [&callers](State &state) {
        callers.prepare(Placement::one_cpu);
        const BusStub stub;
        pack_and_unpack(callers.bare());
        measure(state, [&] { return pack_and_unpack(callers.bare()); });
    };
    return {{"frame/library", frame, 200},
            {"frame/library_with_access_stubbed", frame_without_access, 200},
            {"frame/packing", packing, 200}};
}

Group log_lines()
{
    const auto dropped_line = [](State &state) {
        place_client(Placement::one_cpu);
        for ([[maybe_unused]] auto _ : state) // play_start's own entry line
            ENTRY(" someione[handle:%d][uri:%s][start_pos:%d]\n", handle, uri, start_position);
    };
    return {{"log/dropped_line", dropped_line, 10000}};
}

/// From no session to a session and back. The connection to the bus is there before and after, in
/// both subjects, so that it does not hide what the library adds to the proxy. No other proxy is there.
Group sessions(Callers &callers)
{
    const auto prepare = [&callers] {
        callers.prepare(Placement::one_cpu);
        callers.release();
    };
    const auto library = [prepare](State &state) {
        prepare();
        measure(state, [] {
            const bool is_ready = svc_pvr_service_init() == PS_SESSION_READY;
            return svc_pvr_service_destroy() == PS_SUCCESS && is_ready;
        });
        drain_main_context();
    };
    const auto bare = [prepare](State &state) {
        prepare();
        measure(state, [] { return static_cast<bool>(make_bare_proxy()); });
        drain_main_context();
    };
    return {{"session/library", library, 2}, {"session/bare", bare, 2}};
}

int run(const Options &options)
{
    std::vector<Group> groups;
    const PrivateBus bus;
    Callers callers;
    groups.push_back(calls(callers, Placement::one_cpu, "call/one_cpu"));
    if (has_own_cpu())
        groups.push_back(calls(callers, Placement::own_cpu, "call/own_cpu"));
    else
        benchmark::AddCustomContext("not_measured", "call/own_cpu");
    groups.push_back(frames(callers));
    groups.push_back(log_lines());
    groups.push_back(sessions(callers));
    groups.push_back(event_handling(callers));
    groups.push_back(event_decoding());
    groups.push_back(event_delivery(callers));
    groups.push_back(event_bursts(callers));
    groups.push_back(event_latency(callers));
    const SideFiles files;
    groups.push_back(reading_current(files));
    groups.push_back(reading_older(files));
    groups.push_back(finding_fingerprint(files));
    groups.push_back(writing(files, callers));
    return run_rounds(groups, options);
}

} // namespace

int main(int argc, char **argv)
{
    return measured([&] { return run(parse(argc, argv, default_rounds)); });
}
