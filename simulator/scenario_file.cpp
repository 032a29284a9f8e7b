#include "scenario_file.h"

#include "client/owned.h"
#include "config_file.h"
#include "fault_kinds.h"
#include "pvr_gdbus_generated.h"
#include "timer_recordings.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

namespace simulator {
namespace {

using Act = std::function<Outcome(Service &)>;

constexpr double longest_scenario = 31.0 * 24 * 60 * 60;
constexpr std::int64_t usual_start = 1'704'139'200; ///< 2024-01-01 20:00 UTC

/// What the steps of a file are read with.
struct Stage {
    const Equipment &equipment;
    std::vector<std::string> devices;
    std::uint64_t seed;
    std::uint64_t faults = 0; ///< so far
};

/// What a step does, under the key that says so. The reader fills in the step, or tells what is wrong.
struct Deed {
    const char *key;
    void (*read)(const TomlTable &table, Stage &stage, ScenarioStep &step);
};

bool is_method(const std::string &name)
{
    return g_dbus_interface_info_lookup_method(org_vexan_tv_pvr_interface_info(), name.c_str()) != nullptr;
}

std::optional<std::uint64_t> channel(const TomlTable &table, const char *key, const Stage &stage)
{
    const auto service_id = table.service_id(key);
    if (!service_id)
        return std::nullopt;
    const auto &channels = stage.equipment.channels;
    if (std::any_of(channels.begin(), channels.end(),
                    [&](const Channel &known) { return known.service_id == *service_id; }))
        return service_id;
    table.refuse(key, "the service id of a channel that there is");
    return std::nullopt;
}

/// Null when the value is a mistake.
GVariant *option_value(const TomlTable &options, const std::string &key)
{
    const std::string type = type_of_fault_option(key);
    const auto whole = [&](std::int64_t least, std::int64_t most) { return options.integer(key, least, most); };
    if (type == "u") {
        const auto value = whole(0, std::numeric_limits<std::uint32_t>::max());
        return value ? g_variant_new_uint32(static_cast<std::uint32_t>(*value)) : nullptr;
    }
    if (type == "i") {
        const auto value = whole(std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max());
        return value ? g_variant_new_int32(static_cast<std::int32_t>(*value)) : nullptr;
    }
    if (type == "t") {
        const auto value = whole(0, std::numeric_limits<std::int64_t>::max());
        return value ? g_variant_new_uint64(static_cast<std::uint64_t>(*value)) : nullptr;
    }
    if (type == "d") {
        const auto value = options.number(key, 0, 1);
        return value ? g_variant_new_double(*value) : nullptr;
    }
    if (type == "s") {
        const auto value = options.text(key);
        return value ? g_variant_new_string(value->c_str()) : nullptr;
    }
    if (options.has(key))
        options.complain(key,
                         "'" + shown(key) + "' is no option of a fault, expected one that docs/simulator.md names");
    return nullptr;
}

/// An a{sv}.
pvr::OwnedVariant fault_options(const TomlTable &table, Stage &stage)
{
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    const auto given = table.table("options");
    if (given)
        for (const std::string &key : given->keys())
            if (GVariant *value = option_value(*given, key))
                g_variant_builder_add(&options, "{sv}", key.c_str(), value);
    ++stage.faults;
    if (given && given->has("probability") && !given->has("seed"))
        g_variant_builder_add(&options, "{sv}", "seed", g_variant_new_uint64(stage.seed + stage.faults));
    return pvr::OwnedVariant(g_variant_ref_sink(g_variant_builder_end(&options)));
}

void read_call(const TomlTable &table, Stage &, ScenarioStep &step)
{
    step.call = table.text("call").value_or("");
    if (!step.call.empty() && !is_method(step.call))
        table.refuse("call", "a method of org.vexan.tv.pvr");
}

void read_fault(const TomlTable &table, Stage &stage, ScenarioStep &step)
{
    const auto kind = table.text("fault");
    table.require("target", "the name of a method, a signal or a device");
    const auto target = table.text("target");
    const pvr::OwnedVariant options = fault_options(table, stage);
    if (!kind || !target)
        return;
    try {
        const auto plan = std::make_shared<FaultPlan>(planned_fault(*kind, *target, options.get(), stage.devices));
        const bool has_options = g_variant_n_children(options.get()) != 0;
        step.shown = "fault " + *kind + " " + *target + (has_options ? " " + shown(options.get()) : "");
        step.act = [plan](Service &service) -> Outcome {
            service.faults().add(std::move(*plan));
            return {};
        };
    } catch (const std::invalid_argument &error) {
        table.complain("fault", error.what());
    }
}

void read_end_of_fault(const TomlTable &table, Stage &, ScenarioStep &step)
{
    const auto name = table.text("end_fault");
    table.require("target", "the name of a method, a signal or a device");
    const auto target = table.text("target");
    if (!name || !target)
        return;
    const auto kind = fault_kind_named(*name);
    if (!kind)
        return table.refuse("end_fault", "the kind of a fault");
    step.shown = "end of fault " + *name + " " + *target;
    step.act = [kind = *kind, target = *target](Service &service) -> Outcome {
        service.faults().remove(kind, target);
        return {};
    };
}

void read_tune(const TomlTable &table, Stage &stage, ScenarioStep &step)
{
    const auto service_id = channel(table, "tune", stage);
    if (!service_id)
        return;
    step.shown = "tune " + std::to_string(*service_id);
    step.act = [id = *service_id](Service &service) { return service.set().tune(id); };
}

void read_date(const TomlTable &table, Stage &, ScenarioStep &step)
{
    const auto is_set = table.boolean("date");
    if (!is_set)
        return;
    step.shown = std::string("date ") + (*is_set ? "set" : "unset");
    step.act = [is_set = *is_set](Service &service) -> Outcome {
        service.set().channels.set_date(is_set);
        return {};
    };
}

void read_timer(const TomlTable &table, Stage &stage, ScenarioStep &step)
{
    const auto service_id = channel(table, "timer", stage);
    constexpr auto most = static_cast<std::int64_t>(TimerRecordings::longest);
    const auto in = table.integer("in", 0, most).value_or(0);
    const auto duration = table.integer("duration", 0, most).value_or(0);
    if (!service_id)
        return;
    step.shown = "timer " + std::to_string(*service_id) + " in " + std::to_string(in) + " s for " +
                 std::to_string(duration) + " s";
    step.act = [id = *service_id, in, duration](Service &service) -> Outcome {
        const bool is_done =
            service.set()
                .timer_recordings.set(id, static_cast<std::uint64_t>(in), static_cast<std::uint64_t>(duration))
                .has_value();
        return is_done ? Outcome{} : refused("there are too many timer recordings already");
    };
}

void read_cancel(const TomlTable &table, Stage &, ScenarioStep &step)
{
    const auto id = table.integer("cancel", 1, std::numeric_limits<std::uint32_t>::max());
    if (!id)
        return;
    step.shown = "cancel " + std::to_string(*id);
    step.act = [id = static_cast<std::uint32_t>(*id)](Service &service) {
        return service.set().timer_recordings.cancel(id);
    };
}

/// Of a step that has nothing to say beside what it does.
bool is_wanted(const TomlTable &table, const char *key)
{
    const auto value = table.boolean(key);
    if (value && !*value)
        table.refuse(key, "true");
    return value.value_or(false);
}

void read_restart(const TomlTable &table, Stage &, ScenarioStep &step)
{
    if (!is_wanted(table, "restart"))
        return;
    step.shown = "restart";
    step.act = [](Service &service) -> Outcome {
        service.vanish();
        service.appear();
        return {};
    };
}

void read_crash(const TomlTable &table, Stage &, ScenarioStep &step)
{
    if (!is_wanted(table, "crash"))
        return;
    step.shown = "crash";
    step.act = [](Service &) -> Outcome {
        std::raise(SIGKILL);
        return {};
    };
}

void read_note(const TomlTable &table, Stage &, ScenarioStep &step)
{
    step.shown = table.text("note").value_or("");
    step.act = [](Service &) -> Outcome { return {}; };
}

constexpr Deed deeds[] = {
    {"call", read_call},   {"fault", read_fault}, {"end_fault", read_end_of_fault}, {"tune", read_tune},
    {"date", read_date},   {"timer", read_timer}, {"cancel", read_cancel},          {"restart", read_restart},
    {"crash", read_crash}, {"note", read_note},
};

std::string names_of_deeds()
{
    std::string names;
    for (const Deed &deed : deeds)
        names += (names.empty() ? "" : &deed == std::prev(std::end(deeds)) ? " or " : ", ") + std::string(deed.key);
    return names;
}

ScenarioStep read_step(const TomlTable &table, Stage &stage, Microseconds before)
{
    ScenarioStep step{};
    const double seconds =
        table.number("at", 0, longest_scenario).value_or(std::chrono::duration<double>(before).count());
    step.at = std::chrono::round<Microseconds>(std::chrono::duration<double>(seconds));
    if (step.at < before)
        table.refuse("at", "no moment before that of the last step");
    const Deed *chosen = nullptr;
    for (const Deed &deed : deeds)
        if (table.has(deed.key)) {
            if (chosen != nullptr)
                table.complain(deed.key, std::string(deed.key) + " is there beside " + chosen->key +
                                             ", expected one of them in a step");
            else
                chosen = &deed;
        }
    if (chosen != nullptr)
        chosen->read(table, stage, step);
    else
        table.complain("", "there is nothing that the step does, expected " + names_of_deeds());
    return step;
}

} // namespace

Scenario read_scenario(const std::string &path, const std::function<void(Equipment &)> &overrule)
{
    const TomlFile file(path);
    const TomlTable root = file.root();
    Scenario scenario;
    const auto seed = root.integer("seed", 0, std::numeric_limits<std::int64_t>::max()).value_or(0);
    const std::chrono::seconds start(root.moment("start").value_or(usual_start));
    if (const auto table = root.table("config"))
        scenario.equipment = configured(file, *table);
    overrule(scenario.equipment);
    scenario.equipment.standing_since = start;

    Stage stage{.equipment = scenario.equipment, .devices = {}, .seed = static_cast<std::uint64_t>(seed)};
    for (const DeviceDescription &device : scenario.equipment.devices)
        stage.devices.push_back(device.name);
    Microseconds before{0};
    root.require("step", "tables, each [[step]]");
    for (const TomlTable &table : root.tables("step")) {
        scenario.steps.push_back(read_step(table, stage, before));
        before = std::max(before, scenario.steps.back().at);
    }
    file.finish();
    return scenario;
}

} // namespace simulator
