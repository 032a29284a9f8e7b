// pvrctl sim calls: what applications have asked of the development service, once or as it comes.
#include <algorithm>
#include <cstdint>
#include <exception>
#include <gio/gio.h>
#include <glib-unix.h>
#include <memory>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "event.h"
#include "simulator.h"
#include "wait.h"

namespace pvrctl {
namespace {

struct SimCall {
    Json data;
    std::string text;

    std::uint64_t number() const { return data["number"]; }
};

/// From number, the two times, sender, method and arguments.
SimCall sim_call(GVariant *value)
{
    const Json members = bus_value_json(value);
    const pvr::OwnedVariant arguments(g_variant_get_child_value(value, 5));
    std::string list;
    for (std::size_t i = 0; i < g_variant_n_children(arguments.get()); ++i) {
        const pvr::OwnedVariant box(g_variant_get_child_value(arguments.get(), i));
        const pvr::OwnedVariant argument(g_variant_get_variant(box.get()));
        list += (i == 0 ? "" : ", ") + bus_value_text(argument.get());
    }
    const std::int64_t wall = members[2];
    return {{{"number", members[0]},
             {"wall", in_utc(wall)},
             {"monotonic_us", members[1]},
             {"sender", members[3]},
             {"method", members[4]},
             {"arguments", members[5]}},
            on_the_clock(wall) + "  " + members[3].get<std::string>() + "  " + members[4].get<std::string>() + '(' +
                list + ')'};
}

std::vector<SimCall> calls_behind(const Simulator &simulator, std::uint64_t number)
{
    const pvr::OwnedVariant answer = simulator.ask("ListCalls", g_variant_new("(t)", guint64{number}));
    const pvr::OwnedVariant list(g_variant_get_child_value(answer.get(), 0));
    std::vector<SimCall> calls;
    for (std::size_t i = 0; i < g_variant_n_children(list.get()); ++i)
        calls.push_back(sim_call(pvr::OwnedVariant(g_variant_get_child_value(list.get(), i)).get()));
    return calls;
}

void list_calls(Service &service, const Output &output, std::uint64_t after)
{
    Json calls = Json::array();
    std::vector<Row> rows;
    for (SimCall &call : calls_behind(Simulator(service), after)) {
        rows.push_back({std::to_string(call.number()), call.text});
        calls.push_back(std::move(call.data));
    }
    const std::size_t count = calls.size();
    output.show({{"calls", std::move(calls)}, {"count", count}}, rows);
}

void forget_calls(Service &service, const Output &output)
{
    Simulator(service).ask("ClearCalls");
    output.show({{"cleared", true}}, {{"calls", "none"}});
}

/// Tells of calls until a signal comes, the development service leaves or nobody reads. Everything happens in the
/// thread that runs the default main context.
class CallFollower {
public:
    CallFollower(Service &service, const Output &output, std::uint64_t after)
        : simulator_(service), output_(output), last_(after)
    {
    }
    ~CallFollower();
    CallFollower(const CallFollower &) = delete;
    CallFollower &operator=(const CallFollower &) = delete;

    void run();

private:
    void watch();
    void show(const SimCall &call);
    static void on_call(GDBusConnection *, const char *, const char *, const char *, const char *, GVariant *values,
                        void *self) noexcept;

    EndSignals ends_; // first: before there are threads
    Simulator simulator_;
    const Output &output_;
    std::uint64_t last_; ///< the number of the call that was shown last
    bool is_over_ = false;
    bool is_gone_ = false;
    std::exception_ptr failure_;
    unsigned calls_ = 0;
    unsigned owner_ = 0;
    std::vector<unsigned> sources_;
};

CallFollower::~CallFollower()
{
    for (const unsigned source : sources_)
        g_source_remove(source);
    if (owner_ != 0)
        g_bus_unwatch_name(owner_);
    if (calls_ != 0)
        g_dbus_connection_signal_unsubscribe(simulator_.bus(), calls_);
}

void CallFollower::run()
try {
    // What comes while the list is on its way waits in the main context.
    watch();
    for (const SimCall &call : calls_behind(simulator_, last_))
        show(call);
    while (!is_over_)
        g_main_context_iteration(nullptr, TRUE);
    if (failure_)
        std::rethrow_exception(failure_);
    if (ends_.received() != 0)
        throw Interrupted{ends_.received()};
    if (is_gone_)
        throw g_dbus_connection_is_closed(simulator_.bus()) != FALSE
            ? Failure(ExitCode::not_running, "the system bus cannot be reached: it was lost")
            : Failure(ExitCode::not_running, "the development service has left the bus");
} catch (const ReaderGone &) {
    // As for any reader that has seen enough.
}

void CallFollower::watch()
{
    calls_ =
        g_dbus_connection_signal_subscribe(simulator_.bus(), simulator_name, simulator_name, "CallReceived",
                                           simulator_path, nullptr, G_DBUS_SIGNAL_FLAGS_NONE, on_call, this, nullptr);
    owner_ = g_bus_watch_name_on_connection(
        simulator_.bus(), simulator_name, G_BUS_NAME_WATCHER_FLAGS_NONE, nullptr,
        [](GDBusConnection *, const char *, void *self) {
            auto &follower = *static_cast<CallFollower *>(self);
            follower.is_over_ = follower.is_gone_ = true;
        },
        this, nullptr);
    const auto over = [](int, GIOCondition, void *self) -> gboolean {
        static_cast<CallFollower *>(self)->is_over_ = true;
        return G_SOURCE_CONTINUE;
    };
    sources_ = {g_unix_fd_add(ends_.fd(), G_IO_IN, over, this),
                g_unix_fd_add(STDOUT_FILENO, static_cast<GIOCondition>(G_IO_ERR | G_IO_HUP), over, this)};
    ends_.defer();
}

void CallFollower::show(const SimCall &call)
{
    if (call.number() <= last_)
        return;
    last_ = call.number();
    output_.show_line(call.data, printable(std::to_string(last_) + "  " + call.text));
}

void CallFollower::on_call(GDBusConnection *, const char *, const char *, const char *, const char *, GVariant *values,
                           void *self) noexcept
{
    auto &follower = *static_cast<CallFollower *>(self);
    if (follower.is_over_ || g_variant_is_of_type(values, G_VARIANT_TYPE("(txxssav)")) == FALSE)
        return;
    try {
        follower.show(sim_call(values));
    } catch (...) {
        follower.failure_ = std::current_exception();
        follower.is_over_ = true;
    }
}

} // namespace

void add_sim_calls(Commands &commands, CLI::App &object)
{
    CLI::App &verb =
        add_command(object, "calls",
                    "List the calls that the service has received. With --follow the command goes on "
                    "with those to come, a line or a JSON object each, until Ctrl-C or SIGTERM, and ends "
                    "with 130 or 143 then.",
                    {"sim calls", "sim calls --after 20 --json", "sim calls --follow", "sim calls --clear"});
    const auto after = std::make_shared<std::uint64_t>();
    const auto is_following = std::make_shared<bool>();
    const auto is_clearing = std::make_shared<bool>();
    CLI::Option *number = add_number(verb, "--after", *after, "N", "only calls of a higher number");
    CLI::Option *follow = verb.add_flag("--follow", *is_following, "tell of each call as it arrives");
    verb.add_flag("--clear", *is_clearing, "forget the calls so far")->excludes(number)->excludes(follow);
    choose(commands, verb, [after, is_following, is_clearing](Service &service, Output &output) {
        if (*is_clearing)
            forget_calls(service, output);
        else if (*is_following)
            CallFollower(service, output, *after).run();
        else
            list_calls(service, output, *after);
    });
}

} // namespace pvrctl
