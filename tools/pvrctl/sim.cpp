// pvrctl sim: steers the development service, through its control interface and without the library.
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "simulator.h"

namespace pvrctl {
namespace {

/// What the verbs take, each its part.
struct SimArguments {
    std::uint64_t service_id = 0;
    std::uint64_t seconds = 0;
    std::uint64_t duration = 0;
    int milliseconds = 0;
    int id = 0;
    std::string word;
    std::vector<std::string> values;
};

struct SimEffect {
    Json data;
    Row row;
};

/// What stands between sim and its verbs.
struct SimObject {
    const char *name;
    const char *description;
    const char *example;
};
constexpr std::array sim_objects{
    SimObject{"timer", "Recordings that are set for later", "sim timer add 1 --in 1800 --duration 5400"},
};

struct SimVerb {
    const char *object; ///< null: none
    const char *name;
    const char *description;
    const char *example;
    const char *method; ///< of the control interface
    ExitCode nonsense;  ///< for arguments that make no sense to the development service
    void (*add_arguments)(CLI::App &verb, SimArguments &given);
    GVariant *(*packed)(const SimArguments &given);
    SimEffect (*effect)(const SimArguments &given, GVariant *answer);
};

GVariant *nothing_packed(const SimArguments &) { return nullptr; }

void add_nothing(CLI::App &, SimArguments &) {}

CLI::Option *add_seconds(CLI::App &verb, const std::string &name, std::uint64_t &seconds,
                         const std::string &description)
{
    return add_number(verb, name, seconds, name.starts_with("-") ? "SECONDS" : "", description);
}

/// With the same error the service refuses what is too far ahead and what is no channel.
void check_timer(const std::string &name, std::uint64_t seconds)
{
    constexpr std::uint64_t most = std::uint64_t{366} * 24 * 60 * 60;
    if (seconds > most)
        throw Failure(ExitCode::usage, name + ": " + std::to_string(seconds) + " s are more than 366 days");
}

/// The values of a signal, each in a variant.
GVariant *packed_signal(const SimArguments &given)
{
    GVariantBuilder values;
    g_variant_builder_init(&values, G_VARIANT_TYPE("av"));
    pvr::OwnedError error;
    for (const std::string &text : given.values) {
        const pvr::OwnedVariant value(g_variant_parse(nullptr, text.c_str(), nullptr, nullptr, error.slot()));
        if (!value) {
            g_variant_builder_clear(&values);
            throw Failure(ExitCode::usage, "VALUE: '" + text + "' is no value as GVariant writes it, in which a text " +
                                               "has quotes: " + error->message);
        }
        g_variant_builder_add(&values, "v", value.get());
    }
    return g_variant_new("(s@av)", given.word.c_str(), g_variant_builder_end(&values));
}

constexpr std::array sim_verbs{
    SimVerb{
        nullptr, "emit", "Broadcast a signal of the service", "sim emit result_to_apps 200 '<(1,)>'", "EmitSignal",
        ExitCode::usage,
        [](CLI::App &verb, SimArguments &given) {
            completes(
                verb.add_option("NAME", given.word, "the signal, which need not be one of the interface")->required(),
                Completes::signal);
            verb.add_option("VALUE", given.values,
                            "what it carries, as GVariant writes values: 8, 'text', uint64 7, <(1, 0)>");
        },
        packed_signal,
        [](const SimArguments &given, GVariant *) -> SimEffect {
            return {{{"signal", given.word}, {"emitted", true}}, {"emitted", given.word}};
        }},
    SimVerb{nullptr, "tune", "Change the channel, as somebody with the remote control does", "sim tune 2", "Tune",
            ExitCode::not_found,
            [](CLI::App &verb, SimArguments &given) { add_channel_argument(verb, given.service_id); },
            [](const SimArguments &given) { return g_variant_new("(t)", guint64{given.service_id}); },
            [](const SimArguments &given, GVariant *) -> SimEffect {
                return {{{"service_id", given.service_id}, {"tuned", true}},
                        {"tuned to", std::to_string(given.service_id)}};
            }},
    SimVerb{nullptr, "date", "Have the set know what time it is, or not", "sim date unset", "SetDate", ExitCode::usage,
            [](CLI::App &verb, SimArguments &given) {
                completes(verb.add_option("STATE", given.word, "set or unset")
                              ->required()
                              ->check(CLI::IsMember({"set", "unset"})),
                          Completes::date_state);
            },
            [](const SimArguments &given) { return g_variant_new("(b)", static_cast<gboolean>(given.word == "set")); },
            [](const SimArguments &given, GVariant *) -> SimEffect {
                return {{{"date_set", given.word == "set"}}, {"date", given.word}};
            }},
    SimVerb{
        nullptr, "step", "Have time pass at once", "sim step 3600", "Step", ExitCode::usage,
        [](CLI::App &verb, SimArguments &given) {
            add_seconds(verb, "SECONDS", given.seconds, "how much, at most 31 days")->required();
        },
        [](const SimArguments &given) { return g_variant_new("(t)", guint64{given.seconds}); },
        [](const SimArguments &given, GVariant *) -> SimEffect {
            return {{{"seconds", given.seconds}, {"passed", true}}, {"passed", std::to_string(given.seconds) + " s"}};
        }},
    SimVerb{"timer", "add", "Set a recording for later", "sim timer add 1 --in 1800 --duration 5400",
            "ScheduleRecording", ExitCode::not_found,
            [](CLI::App &verb, SimArguments &given) {
                add_channel_argument(verb, given.service_id);
                add_seconds(verb, "--in", given.seconds, "when it starts, from now on")->required();
                add_seconds(verb, "--duration", given.duration,
                            "how long it records; 0, and without it: until it is stopped");
            },
            [](const SimArguments &given) {
                check_timer("--in", given.seconds);
                check_timer("--duration", given.duration);
                return g_variant_new("(ttt)", guint64{given.service_id}, guint64{given.seconds},
                                     guint64{given.duration});
            },
            [](const SimArguments &given, GVariant *answer) -> SimEffect {
                guint32 id = 0;
                g_variant_get(answer, "(u)", &id);
                return {{{"id", id},
                         {"service_id", given.service_id},
                         {"in_seconds", given.seconds},
                         {"duration", given.duration}},
                        {"timer", std::to_string(id)}};
            }},
    SimVerb{"timer", "remove", "Forget a recording that is set for later, or stop it", "sim timer remove 1",
            "CancelRecording", ExitCode::not_found,
            [](CLI::App &verb, SimArguments &given) {
                add_number(verb, "ID", given.id, "", "its number, as 'sim timer add' tells it", 0)->required();
            },
            [](const SimArguments &given) { return g_variant_new("(u)", static_cast<guint>(given.id)); },
            [](const SimArguments &given, GVariant *) -> SimEffect {
                return {{{"id", given.id}, {"removed", true}}, {"removed", std::to_string(given.id)}};
            }},
    SimVerb{nullptr, "vanish", "Have the service leave the bus, as if it had crashed", "sim vanish --for 2000",
            "Vanish", ExitCode::usage,
            [](CLI::App &verb, SimArguments &given) {
                add_number(verb, "--for", given.milliseconds, "MILLISECONDS",
                           "after which it returns by itself; without it when 'sim return' tells it to", 1);
            },
            [](const SimArguments &given) { return g_variant_new("(u)", static_cast<guint>(given.milliseconds)); },
            [](const SimArguments &given, GVariant *) -> SimEffect {
                const std::string time = given.milliseconds == 0 ? "until it is told to return"
                                                                 : "for " + std::to_string(given.milliseconds) + " ms";
                return {{{"away", true}, {"milliseconds", given.milliseconds == 0 ? Json() : Json(given.milliseconds)}},
                        {"away", time}};
            }},
    SimVerb{nullptr, "return", "Have the service come back", "sim return", "Return", ExitCode::usage, add_nothing,
            nothing_packed,
            [](const SimArguments &, GVariant *) -> SimEffect {
                return {{{"away", false}}, {"service", "is there"}};
            }},
};

void run_verb(Service &service, const Output &output, const SimVerb &verb, const SimArguments &given)
{
    GVariant *arguments = verb.packed(given);
    const pvr::OwnedVariant answer = Simulator(service).ask(verb.method, arguments, verb.nonsense);
    const SimEffect effect = verb.effect(given, answer.get());
    output.show(effect.data, {effect.row});
}

void crash(Service &service, const Output &output)
{
    try {
        Simulator(service).ask("Crash");
    } catch (const SimulatorGone &) {
        output.show({{"crashed", true}}, {{"service", "has crashed"}});
        return;
    }
    throw Failure(ExitCode::failed, "the development service has answered instead of crashing");
}

} // namespace

void add_sim(Commands &commands)
{
    CLI::App &object =
        add_command(commands.root, "sim", "Steer the development service: what goes wrong, and when",
                    {"sim calls --follow", "sim fault add no-answer play_start --times 1", "sim vanish"});
    object.require_subcommand(1);
    add_sim_calls(commands, object);
    add_sim_fault(commands, object);
    for (const SimObject &known : sim_objects)
        add_command(object, known.name, known.description, {known.example}).require_subcommand(1);
    for (const SimVerb &known : sim_verbs) {
        CLI::App &parent = known.object == nullptr ? object : *object.get_subcommand(known.object);
        CLI::App &verb = add_command(parent, known.name, known.description, {known.example});
        const auto given = std::make_shared<SimArguments>();
        known.add_arguments(verb, *given);
        choose(commands, verb,
               [given, &known](Service &service, Output &output) { run_verb(service, output, known, *given); });
    }
    choose(commands,
           add_command(object, "crash", "Have the development service kill itself with SIGKILL", {"sim crash"}), crash);
}

} // namespace pvrctl
