// pvrctl wait: stays until the service, a channel or a playback is in a state.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <gio/gio.h>
#include <memory>
#include <optional>
#include <pvr_service_api.h>
#include <string>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "event_loop.h"
#include "listed.h"
#include "playback.h"
#include "recordings.h"
#include "until.h"

namespace pvrctl {
namespace {

/// Events tell when to look; what nobody tells of, or what was lost, is seen by a look once in a while.
constexpr std::chrono::seconds look_seldom{2};

/// What a state is of; without a number it is of anything.
struct WaitFor {
    std::optional<std::uint64_t> service_id;
    std::optional<int> handle;
    std::optional<int> timeout; ///< seconds
};

bool is_something(const Service &service, int (*call)(int *result))
{
    int answer = 0;
    service.check(call(&answer));
    return answer == 1;
}

bool is_recording(const Service &service, const WaitFor &of)
{
    return of.service_id ? is_recorded(service, *of.service_id) : is_something(service, svc_pvr_is_recording_now);
}

bool is_idle(const Service &service, const WaitFor &of)
{
    if (of.service_id)
        return !is_recorded(service, *of.service_id) && !is_timeshifted(service, *of.service_id);
    return listed(service, svc_pvr_get_recording_service_id_list).empty() &&
           !is_something(service, svc_pvr_is_playing_multimedia);
}

template <int state>
bool plays_as(const Service &service, const WaitFor &of)
{
    if (of.handle) {
        const Playback playback = playback_of(service, *of.handle);
        return !playback.uri.empty() && playback.state == state;
    }
    int play_state = 0;
    int record_state = 0;
    service.check(svc_pvr_get_pvr_state(&play_state, &record_state));
    return play_state == state;
}

bool is_stopped(const Service &service, const WaitFor &of)
{
    return of.handle ? playback_of(service, *of.handle).uri.empty()
                     : !is_something(service, svc_pvr_is_playing_multimedia);
}

struct AwaitedState {
    const char *name;
    enum Of { service, channel, handle } of;
    const char *description;
    bool (*holds)(const Service &service, const WaitFor &of);
};
constexpr std::array awaited_states{
    AwaitedState{"service", AwaitedState::service, "the service is on the bus",
                 [](const Service &, const WaitFor &) { return true; }},
    AwaitedState{"recording", AwaitedState::channel, "a channel is being recorded, or any", is_recording},
    AwaitedState{"idle", AwaitedState::channel,
                 "a channel is neither recorded nor timeshifted, or nothing is recorded, timeshifted and played",
                 is_idle},
    AwaitedState{"playing", AwaitedState::handle, "a handle plays at normal speed, or any", plays_as<PLAY_STATE_PLAY>},
    AwaitedState{"paused", AwaitedState::handle, "a handle is paused, or any", plays_as<PLAY_STATE_PAUSE>},
    AwaitedState{"stopped", AwaitedState::handle, "a handle plays nothing, or none does", is_stopped},
};

const AwaitedState &awaited_state(const std::string &name)
{
    const auto *found = std::ranges::find(awaited_states, name, &AwaitedState::name);
    if (found != awaited_states.end())
        return *found;
    std::string names;
    for (const AwaitedState &state : awaited_states)
        names += (names.empty() ? "" : ", ") + std::string(state.name);
    throw Failure(ExitCode::usage, "--until: '" + name + "' is none of " + names);
}

/// Has the service's news wake the main context, which is all that is made of them.
class Wakeups {
public:
    explicit Wakeups(const Service &service)
    {
        const auto nothing = [](GDBusConnection *, const char *, const char *, void *) {};
        const auto gone = [](GDBusConnection *, const char *, void *) {};
        owner_ = g_bus_watch_name_on_connection(service.bus(), "org.vexan.tv.pvr.server", G_BUS_NAME_WATCHER_FLAGS_NONE,
                                                nothing, gone, nullptr, nullptr);
        service.check(svc_pvr_register_signal_cb(on_signal, nullptr));
        service.check(svc_pvr_register_result_pvr_cb(on_result, nullptr));
    }
    ~Wakeups()
    {
        svc_pvr_unregister_signal_cb(on_signal);
        svc_pvr_unregister_result_pvr_cb(on_result);
        g_bus_unwatch_name(owner_);
    }
    Wakeups(const Wakeups &) = delete;
    Wakeups &operator=(const Wakeups &) = delete;

private:
    static void on_signal(pvr_service_signal, void *) {}
    static void on_result(pvr_service_result, void *) {}

    unsigned owner_ = 0;
};

std::string text_of(const WaitFor &of)
{
    if (of.service_id)
        return channel_text(*of.service_id);
    return of.handle ? "handle " + std::to_string(*of.handle) : "any";
}

void wait_for(Service &service, const Output &output, const AwaitedState &state, const WaitFor &of)
{
    EventLoop loop;
    service.open();
    const Wakeups wakeups(service);
    std::optional<std::string> owner;
    const auto holds = [&] {
        try {
            owner = service.owner();
            return owner && state.holds(service, of);
        } catch (const Failure &failure) {
            // A service that has gone just now is waited for as one that was not there.
            if (failure.code() != ExitCode::not_running || g_dbus_connection_is_closed(service.bus()) != FALSE)
                throw;
            return false;
        }
    };
    if (!loop.run_until(holds, of.timeout, look_seldom))
        throw Failure(ExitCode::time_out, std::string("'") + state.name + "' of " + text_of(of) +
                                              " was not reached within " + std::to_string(*of.timeout) + " s");
    Json data{{"state", state.name}};
    if (state.of == AwaitedState::service)
        data["service"] = *owner;
    if (state.of == AwaitedState::channel)
        data["service_id"] = of.service_id ? Json(*of.service_id) : Json();
    if (state.of == AwaitedState::handle)
        data["handle"] = of.handle ? Json(*of.handle) : Json();
    output.show(data, {{state.name, state.of == AwaitedState::service ? *owner : text_of(of)}});
}

/// What the words of the command line come to.
struct WaitArguments {
    std::string state;
    std::string id;
    int timeout = 0;
};

WaitFor waited_for(const WaitArguments &given, bool has_timeout)
{
    const AwaitedState &state = awaited_state(given.state);
    WaitFor of;
    if (has_timeout)
        of.timeout = given.timeout;
    if (given.id.empty())
        return of;
    if (state.of == AwaitedState::service)
        throw Failure(ExitCode::usage, "ID: there is one service, so '" + given.id + "' is not expected");
    if (state.of == AwaitedState::channel)
        of.service_id = parsed_channel(given.id);
    else
        of.handle = parsed_int("ID", given.id);
    return of;
}

} // namespace

std::vector<Candidate> awaited_states_offered()
{
    std::vector<Candidate> all;
    for (const AwaitedState &state : awaited_states)
        all.push_back({state.name, state.description});
    return all;
}

void add_wait(Commands &commands)
{
    CLI::App &verb = add_command(
        commands.root, "wait",
        "Stay until a state is reached: the 'service' runs; a channel is 'recording' or 'idle'; a handle is 'playing', "
        "'paused' or 'stopped'. A service that is not running is waited for. Ctrl-C and SIGTERM end it with 130 or "
        "143.",
        {"wait --until service --timeout 30", "wait --until idle 1", "wait --until stopped"});
    const auto given = std::make_shared<WaitArguments>();
    const auto of = std::make_shared<WaitFor>();
    completes(verb.add_option("--until", given->state, "service, recording, idle, playing, paused or stopped"),
              Completes::awaited_state)
        ->type_name("STATE")
        ->required();
    completes(verb.add_option("ID", given->id, "the channel's service id, or the handle; without it any"),
              Completes::awaited_id);
    const CLI::Option *timeout =
        add_number(verb, "--timeout", given->timeout, "SECONDS", "end with 3 after this time", 0);
    choose(
        commands, verb,
        [given, of](Service &service, Output &output) { wait_for(service, output, awaited_state(given->state), *of); },
        [given, of, timeout] { *of = waited_for(*given, timeout->count() > 0); });
}

} // namespace pvrctl
