// pvrctl monitor: tells of the service's events as they arrive, one line each.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <exception>
#include <gio/gio.h>
#include <glib-unix.h>
#include <limits>
#include <memory>
#include <optional>
#include <poll.h>
#include <pvr_callbacks.h>
#include <pvr_service_api.h>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "event.h"
#include "recordings.h"
#include "states.h"
#include "wait.h"

namespace pvrctl {
namespace {

constexpr char name_of_service[] = "org.vexan.tv.pvr.server";

struct MonitorOptions {
    std::vector<std::string> texts; ///< as --type was given
    std::vector<int> signal_types;
    std::vector<int> methods;
    std::optional<int> timeout; ///< seconds
    std::optional<int> count;

    bool has_types() const { return !texts.empty(); }
    bool is_wanted(const std::vector<int> &codes, int code) const
    {
        return !has_types() || std::ranges::find(codes, code) != codes.end();
    }
};

/// A number may be that of a type as well as that of a method.
void sort_types(MonitorOptions &options)
{
    for (const std::string &text : options.texts) {
        const std::optional<int> type = signal_type_named(text);
        const std::optional<int> method = method_named(text);
        if (type || method) {
            options.signal_types.insert(options.signal_types.end(), type ? 1 : 0, type.value_or(0));
            options.methods.insert(options.methods.end(), method ? 1 : 0, method.value_or(0));
        } else if (text.find_first_of("0123456789") <= 1) {
            options.signal_types.push_back(parsed_int("--type", text));
            options.methods.push_back(options.signal_types.back());
        } else {
            throw CLI::ValidationError("--type", "'" + text + "' names no type of a signal and no method");
        }
    }
}

/// What the service does now, as far as it runs.
Event state_event(const Service &service, const std::optional<std::string> &owner)
{
    Event event{"state",
                {{"service", Json()}, {"play_state", Json()}, {"record_state", Json()}, {"recordings", Json()}},
                "the service is not running"};
    if (!owner)
        return event;
    int play_state = 0;
    int record_state = 0;
    service.check(svc_pvr_get_pvr_state(&play_state, &record_state));
    Json recordings = Json::array();
    std::string text = play_state_text(play_state) + ", " + record_state_text(record_state);
    for (const Recording &recording : running_recordings(service)) {
        recordings.push_back(recording_json(recording));
        text += ", " + channel_text(recording.service_id) + (recording.is_timeshift ? " as a timeshift" : "");
    }
    event.fields = {{"service", *owner},
                    {"play_state", play_state_json(play_state)},
                    {"record_state", record_state_json(record_state)},
                    {"recordings", std::move(recordings)}};
    event.text = "the service runs, as " + *owner + ", " + text;
    return event;
}

/// One run of the command. Everything happens in the thread that runs the default main context.
class Monitor {
public:
    Monitor(Service &service, const Output &output, const MonitorOptions &options)
        : service_(service), output_(output), options_(options)
    {
    }
    ~Monitor();
    Monitor(const Monitor &) = delete;
    Monitor &operator=(const Monitor &) = delete;

    void run();

private:
    void watch_owner();
    void watch_types();
    void register_callbacks();
    void watch_ends();
    void start();
    void conclude() const;

    /// Whether the next line may be written now: waits for a reader that is slow, but for no longer than the run.
    bool is_room();
    void show(const Event &event);
    void take(const Event &event);
    void owner_is(std::optional<std::string> owner);
    std::int64_t time_left() const { return deadline_ - g_get_monotonic_time(); }

    /// Nothing that is called by C may throw: what does ends the run.
    template <typename Action>
    static void guarded(void *self, Action action) noexcept
    {
        Monitor &monitor = *static_cast<Monitor *>(self);
        if (monitor.is_over_)
            return;
        try {
            action(monitor);
        } catch (...) {
            monitor.failure_ = std::current_exception();
            monitor.is_over_ = true;
        }
    }
    static void on_signal(pvr_service_signal signal, void *self);
    static void on_result(pvr_service_result result, void *self);
    static void on_other(pvr_result_third third, void *self);
    static void on_state(int state, void *self);

    EndSignals ends_;
    Service &service_;
    const Output &output_;
    const MonitorOptions &options_;
    Stamp stamp_;
    std::optional<std::string> owner_;
    bool is_owner_known_ = false;
    bool has_started_ = false;
    bool is_over_ = false;
    bool is_timed_out_ = false;
    bool is_bus_lost_ = false;
    int type_ = -1; ///< of the signal that is on its way to the library
    int count_ = 0;
    std::int64_t deadline_ = std::numeric_limits<std::int64_t>::max();
    std::exception_ptr failure_;
    unsigned owner_watch_ = 0;
    unsigned type_watch_ = 0;
    std::vector<unsigned> sources_;
};

Monitor::~Monitor()
{
    svc_pvr_unregister_signal_cb(on_signal);
    svc_pvr_unregister_result_pvr_cb(on_result);
    svc_pvr_unregister_to_other_apps_cb(on_other);
    svc_pvr_unregister_get_pvr_state_cb(on_state);
    for (const unsigned source : sources_)
        g_source_remove(source);
    if (type_watch_ != 0)
        g_dbus_connection_signal_unsubscribe(service_.bus(), type_watch_);
    if (owner_watch_ != 0)
        g_bus_unwatch_name(owner_watch_);
}

void Monitor::run()
{
    service_.find_bus();
    watch_owner();
    watch_types();
    service_.open();
    // What happens from here on waits in the main context until the state has been told.
    register_callbacks();
    try {
        start();
        while (!is_over_)
            g_main_context_iteration(nullptr, TRUE);
        if (failure_)
            std::rethrow_exception(failure_);
    } catch (const ReaderGone &) {
        return;
    }
    conclude();
}

void Monitor::watch_owner()
{
    const auto appeared = [](GDBusConnection *, const char *, const char *owner, void *self) {
        guarded(self, [owner](Monitor &monitor) { monitor.owner_is(owner); });
    };
    const auto vanished = [](GDBusConnection *connection, const char *, void *self) {
        guarded(self, [connection](Monitor &monitor) {
            monitor.owner_is(std::nullopt);
            monitor.is_bus_lost_ = connection == nullptr;
            monitor.is_over_ = monitor.is_over_ || monitor.is_bus_lost_;
        });
    };
    owner_watch_ = g_bus_watch_name_on_connection(service_.bus(), name_of_service, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                                  appeared, vanished, this, nullptr);
    while (!is_owner_known_)
        g_main_context_iteration(nullptr, TRUE);
}

// The library hands on a signal's record without its type. What was subscribed to first hears of a signal first, so
// this has to come before the library's session.
void Monitor::watch_types()
{
    type_watch_ = g_dbus_connection_signal_subscribe(
        service_.bus(), name_of_service, "org.vexan.tv.pvr", "send_pvr_signal_to_apps", "/org/vexan/tv/pvr", nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE,
        [](GDBusConnection *, const char *, const char *, const char *, const char *, GVariant *values, void *self) {
            Monitor &monitor = *static_cast<Monitor *>(self);
            monitor.type_ = -1;
            if (g_variant_is_of_type(values, G_VARIANT_TYPE("(is)")) != FALSE)
                g_variant_get(values, "(i&s)", &monitor.type_, nullptr);
        },
        this, nullptr);
}

void Monitor::register_callbacks()
{
    service_.check(svc_pvr_register_signal_cb(on_signal, this));
    service_.check(svc_pvr_register_result_pvr_cb(on_result, this));
    service_.check(svc_pvr_register_to_other_apps_cb(on_other, this));
    service_.check(svc_pvr_register_get_pvr_state_cb(on_state, this));
}

void Monitor::on_signal(pvr_service_signal signal, void *self)
{
    guarded(self, [&signal](Monitor &monitor) {
        if (monitor.options_.is_wanted(monitor.options_.signal_types, monitor.type_))
            monitor.take(signal_event(monitor.type_, signal));
    });
}

void Monitor::on_result(pvr_service_result result, void *self)
{
    guarded(self, [&result](Monitor &monitor) {
        if (monitor.options_.is_wanted(monitor.options_.methods, result.method))
            monitor.take(result_event(result));
    });
}

void Monitor::on_other(pvr_result_third third, void *self)
{
    guarded(self, [&third](Monitor &monitor) {
        if (!monitor.options_.has_types())
            monitor.take(other_event(third));
    });
}

void Monitor::on_state(int state, void *self)
{
    guarded(self, [state](Monitor &monitor) {
        if (monitor.options_.is_wanted(monitor.options_.methods, PS_PVR_STATE_CHANGE))
            monitor.take(service_state_event(state));
    });
}

void Monitor::owner_is(std::optional<std::string> owner)
{
    if (has_started_ && owner != owner_) {
        if (owner_)
            show(owner_event("disconnected", *owner_));
        if (owner)
            show(owner_event("connected", *owner));
    }
    owner_ = std::move(owner);
    is_owner_known_ = true;
}

void Monitor::start()
{
    ends_.defer();
    Event state{};
    try {
        state = state_event(service_, owner_);
    } catch (const Failure &failure) {
        if (failure.code() != ExitCode::not_running || g_dbus_connection_is_closed(service_.bus()) != FALSE)
            throw;
        owner_.reset(); // it has gone just now
        state = state_event(service_, owner_);
    }
    has_started_ = true;
    if (options_.timeout)
        deadline_ = g_get_monotonic_time() + std::int64_t{*options_.timeout} * G_USEC_PER_SEC;
    watch_ends();
    show(state);
}

/// What ends the run besides the events: a signal, time, and a reader that has gone.
void Monitor::watch_ends()
{
    const auto over = [](int, GIOCondition, void *self) -> gboolean {
        static_cast<Monitor *>(self)->is_over_ = true;
        return G_SOURCE_CONTINUE;
    };
    sources_.push_back(g_unix_fd_add(ends_.fd(), G_IO_IN, over, this));
    sources_.push_back(g_unix_fd_add(
        STDOUT_FILENO, static_cast<GIOCondition>(G_IO_ERR | G_IO_HUP),
        [](int, GIOCondition, void *self) -> gboolean {
            guarded(self, [](const Monitor &) { throw ReaderGone(ExitCode::failed, "nobody reads"); });
            return G_SOURCE_CONTINUE;
        },
        this));
    if (!options_.timeout)
        return;
    // A timeout source counts milliseconds in 32 bits; this one has a moment.
    static GSourceFuncs at_a_moment{
        nullptr, nullptr, [](GSource *, GSourceFunc callback, void *self) { return callback(self); },
        nullptr, nullptr, nullptr};
    GSource *timer = g_source_new(&at_a_moment, sizeof(GSource));
    g_source_set_ready_time(timer, deadline_);
    g_source_set_callback(
        timer,
        [](void *self) -> gboolean {
            guarded(self, [](Monitor &monitor) { monitor.is_timed_out_ = monitor.is_over_ = true; });
            return G_SOURCE_CONTINUE;
        },
        this, nullptr);
    sources_.push_back(g_source_attach(timer, nullptr));
    g_source_unref(timer);
}

bool Monitor::is_room()
{
    std::array<pollfd, 2> files{pollfd{STDOUT_FILENO, POLLOUT, 0}, pollfd{ends_.fd(), POLLIN, 0}};
    int ready = 0;
    do {
        constexpr std::int64_t longest = 60000;
        const std::int64_t left = std::max<std::int64_t>(time_left() / 1000, 0);
        ready = poll(files.data(), files.size(), static_cast<int>(std::min(left, longest)));
        is_timed_out_ = ready == 0 && time_left() <= 0;
    } while ((ready == 0 && !is_timed_out_) || (ready < 0 && errno == EINTR));
    is_over_ = is_over_ || is_timed_out_ || files[1].revents != 0;
    return !is_over_;
}

void Monitor::show(const Event &event)
{
    if (is_room())
        stamp_.show(output_, event);
}

void Monitor::take(const Event &event)
{
    show(event);
    if (is_over_)
        return;
    ++count_;
    is_over_ = options_.count && count_ >= *options_.count;
}

void Monitor::conclude() const
{
    if (ends_.received() != 0)
        throw Interrupted{ends_.received()};
    if (is_bus_lost_)
        throw Failure(ExitCode::not_running, "the system bus cannot be reached: it was lost");
    if (is_timed_out_ && options_.count)
        throw Failure(ExitCode::time_out, std::to_string(count_) + " of " + std::to_string(*options_.count) +
                                              " events came within " + std::to_string(*options_.timeout) + " s");
}

} // namespace

void add_monitor(Commands &commands)
{
    CLI::App &verb = add_command(
        commands.root, "monitor",
        "Tell of the service's events as they arrive, one line each. With --json each line is a JSON object. It goes "
        "on until Ctrl-C or SIGTERM, also while the service is away, and ends with 130 or 143 then.",
        {"monitor", "monitor --json --timeout 60", "monitor --type PS_PLAY_END --type PS_PLAY_STOP --count 1"});
    const auto options = std::make_shared<MonitorOptions>();
    completes(
        verb.add_option("--type", options->texts,
                        "show only the signals of this type and the results of this method, by name or number as in "
                        "pvr_events.h; may be given often")
            ->type_name("NAME|NUMBER")
            ->allow_extra_args(false),
        Completes::event);
    const auto timeout = std::make_shared<int>();
    const auto count = std::make_shared<int>();
    const CLI::Option *has_timeout = add_number(verb, "--timeout", *timeout, "SECONDS",
                                                "end after this time; with 3 when --count is not reached", 0);
    const CLI::Option *has_count = add_number(verb, "--count", *count, "N", "end after so many events", 1);
    choose(
        commands, verb, [options](Service &service, Output &output) { Monitor(service, output, *options).run(); },
        [options, timeout, count, has_timeout, has_count] {
            sort_types(*options);
            if (has_timeout->count() > 0)
                options->timeout = *timeout;
            if (has_count->count() > 0)
                options->count = *count;
        });
}

} // namespace pvrctl
