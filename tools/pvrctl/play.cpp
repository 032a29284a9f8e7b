// pvrctl play: start a playback, steer it, stop it. The library returns success whatever the service answered,
// so the effect is looked at afterwards.
#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <pvr_service_api.h>
#include <string>

#include "arguments.h"
#include "command.h"
#include "issued_handle.h"
#include "playback.h"

namespace pvrctl {
namespace {

void show(Output &output, const Playback &playback) { output.show(playback_json(playback), playback_rows(playback)); }

Playback running_playback(const Service &service, int handle)
{
    Playback playback = playback_of(service, handle);
    if (!playback.is_running())
        throw Failure(ExitCode::refused, "nothing plays on handle " + std::to_string(handle));
    return playback;
}

// ---- start

struct Start {
    std::string file;
    int from = 0;
    int handle = 0;
};

Playback start_on(const Service &service, int handle, const std::string &uri, int from, const std::string &uri_before)
{
    service.check(svc_pvr_play_start(handle, uri.c_str(), from));
    Playback playback = playback_of(service, handle);
    // A start that was refused leaves what was playing there. The library cuts what the service tells.
    const bool is_ours =
        playback.uri != uri_before ||
        (uri.starts_with(playback.uri) && (!playback.has_known_state() || playback.state == PLAY_STATE_PLAY));
    if (!playback.is_running() || !is_ours)
        throw Failure(ExitCode::refused,
                      "the service does not play " + uri + "; it refused, or the playback has ended already");
    return playback;
}

void start(Service &service, Output &output, const Start &wanted, bool has_handle)
{
    const std::string uri = existing_file(wanted.file);
    service.open();
    if (has_handle) {
        show(output, start_on(service, wanted.handle, uri, wanted.from, playback_of(service, wanted.handle).uri));
        return;
    }
    IssuedHandle handle(service, svc_pvr_get_handle_for_playback);
    show(output, start_on(service, handle.number(), uri, wanted.from, ""));
    handle.keep();
}

void add_start(Commands &commands, CLI::App &object)
{
    CLI::App &verb =
        add_command(object, "start", "Play a recording", {"play start first.srf", "play start first.srf --from 90"});
    const auto wanted = std::make_shared<Start>();
    completes(verb.add_option("FILE", wanted->file, "the recording")->required()->type_name(""), Completes::recording);
    add_number(verb, "--from", wanted->from, "SECONDS", "where to start; without it at the beginning");
    const CLI::Option *handle =
        completes(add_number(verb, "--handle", wanted->handle, "N", "play on this handle; without it on a new one"),
                  Completes::handle);
    choose(commands, verb, [wanted, handle](Service &service, Output &output) {
        start(service, output, *wanted, handle->count() > 0);
    });
}

// ---- steer

/// Whether a control did what it should, seen from what plays before and after.
using IsEffective = std::function<bool(const Playback &before, const Playback &after)>;

void steer(Service &service, Output &output, int handle, const std::function<int()> &control,
           const IsEffective &is_effective)
{
    service.open();
    const Playback before = running_playback(service, handle);
    service.check(control());
    const Playback after = playback_of(service, handle);
    if (before.has_known_state() && !is_effective(before, after))
        throw Failure(ExitCode::refused,
                      "the service did not do it on handle " + std::to_string(handle) + ": " +
                          (after.is_running() ? "the playback goes on as it was" : "the playback has ended"));
    show(output, after);
}

/// The verbs that need a handle only, and the state each leads to.
struct Control {
    const char *verb;
    const char *description;
    const char *example;
    int (*call)(int handle);
    int state;
};

constexpr std::array controls{
    Control{"pause", "Pause a playback", "play pause 3", svc_pvr_play_pause, PLAY_STATE_PAUSE},
    Control{"resume", "Play on at normal speed", "play resume 3", svc_pvr_play_resume, PLAY_STATE_PLAY},
    Control{"step", "Pause a playback and show its next frame", "play step 3", svc_pvr_step_frame,
            PLAY_STATE_FRAME_STEP},
};

void add_control(Commands &commands, CLI::App &object, const Control &control)
{
    CLI::App &verb = add_command(object, control.verb, control.description, {control.example});
    const auto handle = std::make_shared<int>();
    add_handle_argument(verb, *handle);
    choose(commands, verb, [handle, &control](Service &service, Output &output) {
        steer(
            service, output, *handle, [&] { return control.call(*handle); },
            [&](const Playback &, const Playback &after) {
                return after.is_running() && after.state == control.state;
            });
    });
}

/// The two directions of winding. Their states follow one another as the speeds do.
struct Direction {
    const char *verb;
    const char *description;
    const char *example;
    const char *slow_example;
    int (*call)(int handle, int type);
    int first_state;
    int last_state;
    bool is_back;
};

constexpr std::array directions{
    Direction{"forward", "Wind forward, or play in slow motion", "play forward 3 --speed 8",
              "play forward 3 --speed 1/2", svc_pvr_play_forward, PLAY_STATE_FF_1, PLAY_STATE_FF_1_8, false},
    Direction{"rewind", "Wind back, or play backwards in slow motion", "play rewind 3 --speed 8",
              "play rewind 3 --speed 1/2", svc_pvr_play_rewind, PLAY_STATE_REW_1, PLAY_STATE_REW_1_8, true},
};

struct Wind {
    int handle = 0;
    int speed_type = 1;
    int type = 0;
};

void wind(Service &service, Output &output, const Direction &direction, const Wind &wanted, bool has_type)
{
    const int type = has_type ? wanted.type : wanted.speed_type;
    // A number given as it is may mean another speed to another service.
    const int first = has_type ? direction.first_state : direction.first_state + type - 1;
    const int last = has_type ? direction.last_state : first;
    steer(
        service, output, wanted.handle, [&] { return direction.call(wanted.handle, type); },
        [&](const Playback &before, const Playback &after) {
            if (after.state >= first && after.state <= last)
                return true;
            // It may be through already: forward to the end, or back to the beginning, from where it plays on.
            return direction.is_back ? after.state == PLAY_STATE_PLAY && after.is_running() &&
                                           after.relative_second < std::max<std::int64_t>(before.relative_second, 1)
                                     : !after.is_running();
        });
}

void add_direction(Commands &commands, CLI::App &object, const Direction &direction)
{
    CLI::App &verb =
        add_command(object, direction.verb, direction.description, {direction.example, direction.slow_example});
    const auto wanted = std::make_shared<Wind>();
    add_handle_argument(verb, wanted->handle);
    CLI::Option *speed = add_speed(verb, wanted->speed_type);
    CLI::Option *type = add_number(verb, "--type", wanted->type, "N",
                                   "the service's own number for a speed, sent as it is; the development service "
                                   "takes 1 to 7 for 2 to 128 times, and 8, 9, 10 for 1/2, 1/4, 1/8");
    type->excludes(speed);
    choose(commands, verb, [wanted, type, &direction](Service &service, Output &output) {
        wind(service, output, direction, *wanted, type->count() > 0);
    });
}

// ---- skip

struct Skip {
    int handle = 0;
    int to = 0;
    int by = 0;
    int percent = 0;
};

/// What the development service takes the numbers of a skip for.
enum SkipType { skip_to = 0, skip_forward = 1, skip_back = 2, skip_percent = 3 };

void add_skip(Commands &commands, CLI::App &object)
{
    CLI::App &verb = add_command(object, "skip", "Go to another place of the recording",
                                 {"play skip 3 --to 90", "play skip 3 --by -30", "play skip 3 --percent 50"});
    const auto wanted = std::make_shared<Skip>();
    add_handle_argument(verb, wanted->handle);
    const CLI::Option *to = add_number(verb, "--to", wanted->to, "SECONDS", "from the start of the recording");
    // The distance is sent without its sign.
    const CLI::Option *by = add_number(verb, "--by", wanted->by, "SECONDS", "forward, or back when it is negative",
                                       -std::numeric_limits<int>::max());
    const CLI::Option *percent = add_number(verb, "--percent", wanted->percent, "P", "of the recording's length");
    choose(
        commands, verb,
        [wanted, to, by](Service &service, Output &output) {
            const int distance = wanted->by < 0 ? -wanted->by : wanted->by;
            const SkipType direction = wanted->by < 0 ? skip_back : skip_forward;
            steer(
                service, output, wanted->handle,
                [&] {
                    if (to->count() > 0)
                        return svc_pvr_play_skip(wanted->handle, skip_to, wanted->to, 0);
                    if (by->count() > 0)
                        return svc_pvr_play_skip(wanted->handle, direction, distance, 0);
                    return svc_pvr_play_skip(wanted->handle, skip_percent, 0, wanted->percent);
                },
                // Where it lands is the service's to decide, and it may be the end.
                [](const Playback &, const Playback &) { return true; });
        },
        [to, by, percent] {
            if (to->count() + by->count() + percent->count() != 1)
                throw CLI::ValidationError("play skip", "takes one of --to, --by and --percent");
        });
}

// ---- stop

struct Stop {
    int handle = 0;
    bool is_all = false;
    std::string file;
};

void stop_handle(Service &service, Output &output, int handle)
{
    service.open();
    const Playback playback = running_playback(service, handle);
    service.check(svc_pvr_play_stop(handle));
    if (const Playback after = playback_of(service, handle); after.is_running() && after.has_known_state())
        throw Failure(ExitCode::refused, "the service did not stop handle " + std::to_string(handle));
    service.check(svc_pvr_release_handle(handle));
    output.show({{"handle", handle}, {"uri", playback.uri}, {"stopped", true}, {"released", true}},
                {{"handle", std::to_string(handle) + ", given back"}, {"stopped", playback.uri}});
}

void stop_all(Service &service, Output &output)
{
    constexpr int leave_source = 0;
    service.open();
    const int result = svc_pvr_stop_playing_sync_ex(application, leave_source);
    service.check_delivered(result);
    if (result != 0)
        throw Failure(ExitCode::refused, "the service did not stop what plays; it answered " + std::to_string(result));
    output.show({{"stopped", true}}, {{"stopped", "whatever was playing"}});
}

bool does_anything_play(const Service &service)
{
    int play_state = PLAY_STATE_NONE;
    service.check(svc_pvr_get_pvr_state(&play_state, nullptr));
    return is_playing_state(play_state);
}

void stop_file(Service &service, Output &output, const std::string &file)
{
    const std::string uri = absolute_path(file);
    service.open();
    const bool was_playing = does_anything_play(service);
    service.check(svc_pvr_play_stop_by_uri(uri.c_str()));
    // The handle is not known here, so only whether anything plays can be asked.
    if (!was_playing || does_anything_play(service))
        throw Failure(ExitCode::refused, "the service does not play " + uri);
    output.show({{"uri", uri}, {"stopped", true}}, {{"stopped", uri}});
}

void add_stop(Commands &commands, CLI::App &object)
{
    CLI::App &verb = add_command(object, "stop",
                                 "Stop a playback, and give its handle back. With --all and --file the handle stays "
                                 "issued: give it back with 'handle release'.",
                                 {"play stop 3", "play stop --all", "play stop --file first.srf"});
    const auto wanted = std::make_shared<Stop>();
    const CLI::Option *handle =
        completes(add_number(verb, "HANDLE", wanted->handle, "", "the playback"), Completes::playback);
    const CLI::Option *all = verb.add_flag("--all", wanted->is_all, "whatever plays");
    const CLI::Option *file =
        completes(verb.add_option("--file", wanted->file, "the playback of this recording")->type_name("FILE"),
                  Completes::recording);
    choose(
        commands, verb,
        [wanted, handle](Service &service, Output &output) {
            if (handle->count() > 0)
                stop_handle(service, output, wanted->handle);
            else if (wanted->is_all)
                stop_all(service, output);
            else
                stop_file(service, output, wanted->file);
        },
        [handle, all, file] {
            if (handle->count() + all->count() + file->count() != 1)
                throw CLI::ValidationError("play stop", "takes one of HANDLE, --all and --file");
        });
}

} // namespace

void add_play(Commands &commands)
{
    CLI::App &object = add_command(commands.root, "play", "Play recordings: start, steer, stop",
                                   {"play start first.srf", "play pause 3", "play stop 3"});
    object.require_subcommand(1);
    add_start(commands, object);
    for (const Control &control : controls)
        add_control(commands, object, control);
    for (const Direction &direction : directions)
        add_direction(commands, object, direction);
    add_skip(commands, object);
    add_stop(commands, object);
}

} // namespace pvrctl
