// pvrctl sim fault: what goes wrong in the development service on request.
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "event.h"
#include "simulator.h"

namespace pvrctl {
namespace {

struct FaultArguments {
    std::string kind;
    std::string target;
    int milliseconds = 0;
    std::string error;
    std::string message;
    int result = 0;
    std::string code;
    int times = 0;
    double probability = 0;
    std::uint64_t seed = 0;
};

/// By the name of the signal that is meant, or a number.
GVariant *packed_code(const FaultArguments &given)
{
    const auto named = given.target == "result_to_apps" ? method_named(given.code) : signal_type_named(given.code);
    return g_variant_new_int32(named ? *named : parsed_int("--code", given.code));
}

/// An option of the control interface, sent when it was given.
struct FaultOption {
    const char *name;
    CLI::Option *(*add)(CLI::App &verb, FaultArguments &given);
    GVariant *(*packed)(const FaultArguments &given);
};

const std::initializer_list<FaultOption> fault_options{
    {"milliseconds",
     [](CLI::App &verb, FaultArguments &given) {
         return add_number(verb, "--milliseconds", given.milliseconds, "N", "delay: how long a call waits", 0);
     },
     [](const FaultArguments &given) { return g_variant_new_uint32(static_cast<guint32>(given.milliseconds)); }},
    {"error",
     [](CLI::App &verb, FaultArguments &given) {
         return verb.add_option("--error", given.error, "error: the D-Bus error's name")->type_name("NAME");
     },
     [](const FaultArguments &given) { return g_variant_new_string(given.error.c_str()); }},
    {"message",
     [](CLI::App &verb, FaultArguments &given) {
         return verb.add_option("--message", given.message, "error: its text")->type_name("TEXT");
     },
     [](const FaultArguments &given) { return g_variant_new_string(given.message.c_str()); }},
    {"result",
     [](CLI::App &verb, FaultArguments &given) {
         return add_number(verb, "--result", given.result, "N", "result: what is answered");
     },
     [](const FaultArguments &given) { return g_variant_new_int32(given.result); }},
    {"code",
     [](CLI::App &verb, FaultArguments &given) {
         return completes(
             verb.add_option("--code", given.code, "of signals: only those of this type or method, as in pvr_events.h")
                 ->type_name("NAME|NUMBER"),
             Completes::event);
     },
     packed_code},
    {"times",
     [](CLI::App &verb, FaultArguments &given) {
         return add_number(verb, "--times", given.times, "N", "strike so often and no more; without it until removed",
                           1);
     },
     [](const FaultArguments &given) { return g_variant_new_uint32(static_cast<guint32>(given.times)); }},
    {"probability",
     [](CLI::App &verb, FaultArguments &given) {
         return verb.add_option("--probability", given.probability, "strike by chance, from 0, never, to 1, always")
             ->type_name("P");
     },
     [](const FaultArguments &given) { return g_variant_new_double(given.probability); }},
    {"seed",
     [](CLI::App &verb, FaultArguments &given) {
         return add_number(verb, "--seed", given.seed, "N",
                           "where chance begins; the same strikes follow from the same");
     },
     [](const FaultArguments &given) { return g_variant_new_uint64(given.seed); }},
};

using GivenOptions = std::vector<std::pair<const CLI::Option *, const FaultOption *>>;

void add_fault(Service &service, const Output &output, const FaultArguments &given, const GivenOptions &known)
{
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    for (const auto &[option, row] : known)
        if (option->count() > 0)
            g_variant_builder_add(&options, "{sv}", row->name, row->packed(given));
    const pvr::OwnedVariant arguments(g_variant_ref_sink(
        g_variant_new("(ss@a{sv})", given.kind.c_str(), given.target.c_str(), g_variant_builder_end(&options))));
    const pvr::OwnedVariant answer = Simulator(service).ask("AddFault", arguments.get());
    guint32 id = 0;
    g_variant_get(answer.get(), "(u)", &id);
    output.show({{"id", id}, {"kind", given.kind}, {"target", given.target}},
                {{"fault", std::to_string(id)}, {"kind", given.kind}, {"target", given.target}});
}

void list_faults(Service &service, const Output &output)
{
    const pvr::OwnedVariant answer = Simulator(service).ask("ListFaults");
    Json faults = Json::array();
    std::vector<Row> rows;
    GVariant *list = nullptr;
    g_variant_get(answer.get(), "(@a(ussa{sv}tt))", &list);
    const pvr::OwnedVariant owned(list);
    for (const Json &fault : bus_value_json(list)) {
        const std::string id = fault[0].dump();
        std::string text = fault[1].get<std::string>() + ' ' + fault[2].get<std::string>();
        for (const auto &[name, value] : fault[3].items())
            text += ", " + name + ' ' + (value.is_string() ? value.get<std::string>() : value.dump());
        rows.push_back({id, text + "; struck " + fault[5].dump() + " of " + fault[4].dump()});
        faults.push_back({{"id", fault[0]},
                          {"kind", fault[1]},
                          {"target", fault[2]},
                          {"options", fault[3]},
                          {"met", fault[4]},
                          {"struck", fault[5]}});
    }
    const std::size_t count = faults.size();
    output.show({{"faults", std::move(faults)}, {"count", count}}, rows);
}

void remove_fault(Service &service, const Output &output, int id)
{
    Simulator(service).ask("RemoveFault", g_variant_new("(u)", static_cast<guint>(id)), ExitCode::not_found);
    output.show({{"id", id}, {"removed", true}}, {{"removed", std::to_string(id)}});
}

void clear_faults(Service &service, const Output &output)
{
    Simulator(service).ask("ClearFaults");
    output.show({{"cleared", true}}, {{"faults", "none"}});
}

void add_fault_add(Commands &commands, CLI::App &object)
{
    CLI::App &verb = add_command(
        object, "add",
        "Have something go wrong. Methods: delay, no-answer, error, result, wrong-type, crash. Signals: drop, "
        "duplicate, hold, short-record, no-digits, wrong-variant. Storage devices: device-full, device-pulled.",
        {"sim fault add delay play_start --milliseconds 500", "sim fault add result play_pause --result -2 --times 1",
         "sim fault add drop result_to_apps --code PS_RECORD_STOP", "sim fault add device-full usb1"});
    const auto given = std::make_shared<FaultArguments>();
    const auto known = std::make_shared<GivenOptions>();
    completes(verb.add_option("KIND", given->kind, "what goes wrong")->required(), Completes::fault_kind);
    completes(verb.add_option("TARGET", given->target, "the method, the signal or the device, by its name")->required(),
              Completes::fault_target);
    for (const FaultOption &option : fault_options)
        known->emplace_back(option.add(verb, *given), &option);
    choose(
        commands, verb,
        [given, known](Service &service, Output &output) { add_fault(service, output, *given, *known); },
        [given, known] {
            if (!given->code.empty())
                g_variant_unref(g_variant_ref_sink(packed_code(*given))); // refuses what is no code
        });
}

} // namespace

void add_sim_fault(Commands &commands, CLI::App &parent)
{
    CLI::App &object = add_command(parent, "fault", "What goes wrong on request",
                                   {"sim fault add crash record_start --times 1", "sim fault list", "sim fault clear"});
    object.require_subcommand(1);
    add_fault_add(commands, object);
    choose(commands,
           add_command(object, "list", "List the faults, and how often each has struck",
                       {"sim fault list", "sim fault list --json"}),
           list_faults);
    CLI::App &remove = add_command(object, "remove", "Remove a fault", {"sim fault remove 1"});
    const auto id = std::make_shared<int>();
    completes(add_number(remove, "ID", *id, "", "the fault's number, as 'sim fault list' tells it", 0)->required(),
              Completes::fault);
    choose(commands, remove, [id](Service &service, Output &output) { remove_fault(service, output, *id); });
    choose(commands, add_command(object, "clear", "Remove all faults", {"sim fault clear"}), clear_faults);
}

} // namespace pvrctl
