// pvrctl wait: stays until the service, a channel or a playback is in a state.
#include <array>
#include <chrono>
#include <cstdint>
#include <gio/gio.h>
#include <memory>
#include <optional>
#include <pvr_service_api.h>
#include <string>

#include "arguments.h"
#include "command.h"
#include "event_loop.h"
#include "listed.h"
#include "playback.h"
#include "recordings.h"

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
    const char *example;
    bool (*holds)(const Service &service, const WaitFor &of);
};
constexpr std::array awaited_states{
    AwaitedState{"service", AwaitedState::service, "Stay until the service is on the bus", "wait service --timeout 30",
                 [](const Service &, const WaitFor &) { return true; }},
    AwaitedState{"recording", AwaitedState::channel, "Stay until a channel is being recorded, or any",
                 "wait recording 1", is_recording},
    AwaitedState{"idle", AwaitedState::channel,
                 "Stay until a channel is neither recorded nor timeshifted, or nothing is recorded, timeshifted and "
                 "played",
                 "wait idle 1 --timeout 3600", is_idle},
    AwaitedState{"playing", AwaitedState::handle, "Stay until a handle plays at normal speed, or any", "wait playing 1",
                 plays_as<PLAY_STATE_PLAY>},
    AwaitedState{"paused", AwaitedState::handle, "Stay until a handle is paused, or any", "wait paused 1",
                 plays_as<PLAY_STATE_PAUSE>},
    AwaitedState{"stopped", AwaitedState::handle, "Stay until a handle plays nothing, or none does", "wait stopped 1",
                 is_stopped},
};

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

void add_state(Commands &commands, CLI::App &object, const AwaitedState &state)
{
    CLI::App &verb = add_command(object, state.name, state.description, {state.example});
    const auto of = std::make_shared<WaitFor>();
    const auto service_id = std::make_shared<std::uint64_t>();
    const auto handle = std::make_shared<int>();
    const auto timeout = std::make_shared<int>();
    const CLI::Option *has_channel = nullptr;
    const CLI::Option *has_handle = nullptr;
    if (state.of == AwaitedState::channel)
        has_channel = add_number(verb, "SERVICE_ID", *service_id, "", "the channel's service id; without it any");
    if (state.of == AwaitedState::handle)
        has_handle = add_number(verb, "HANDLE", *handle, "", "a handle, as the service issued it; without it any");
    const CLI::Option *has_timeout =
        add_number(verb, "--timeout", *timeout, "SECONDS", "end with 3 after this time", 0);
    choose(
        commands, verb, [of, &state](Service &service, Output &output) { wait_for(service, output, state, *of); },
        [=] {
            if (has_channel != nullptr && has_channel->count() > 0)
                of->service_id = *service_id;
            if (has_handle != nullptr && has_handle->count() > 0)
                of->handle = *handle;
            if (has_timeout->count() > 0)
                of->timeout = *timeout;
        });
}

} // namespace

void add_wait(Commands &commands)
{
    CLI::App &object = add_command(commands.root, "wait",
                                   "Stay until a state is reached. A service that is not running is waited for. Ctrl-C "
                                   "and SIGTERM end it with 130 or 143.",
                                   {"wait service --timeout 30", "wait idle 1", "wait stopped"});
    object.require_subcommand(1);
    for (const AwaitedState &state : awaited_states)
        add_state(commands, object, state);
}

} // namespace pvrctl
