#include "fault_kinds.h"

#include "pvr_gdbus_generated.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace simulator {
namespace {

using Names = std::vector<std::string_view>;

constexpr std::string_view any;
constexpr std::string_view of_records = "send_pvr_signal_to_apps";
constexpr std::string_view of_results = "result_to_apps";

struct Kind;
using Check = void (*)(const Kind &kind, const std::string &target, const std::vector<std::string> &devices);

// What the targets of a kind are: each refuses what is none.
void require_method(const Kind &kind, const std::string &name, const std::vector<std::string> &);
void require_signal(const Kind &kind, const std::string &name, const std::vector<std::string> &);
void require_device(const Kind &, const std::string &name, const std::vector<std::string> &devices);

struct Kind {
    FaultKind kind;
    const char *name;
    Occasion occasion;
    Check check;
    std::string_view only; ///< the one target that it makes sense for
    Names required;        ///< options
    Names allowed;         ///< besides those that every fault may have
};

const std::vector<Kind> &kinds()
{
    static const std::vector<Kind> table{
        {FaultKind::delay, "delay", Occasion::arrival, require_method, any, {"milliseconds"}, {}},
        {FaultKind::no_answer, "no-answer", Occasion::answer, require_method, any, {}, {}},
        {FaultKind::error, "error", Occasion::answer, require_method, any, {"error"}, {"message"}},
        {FaultKind::result, "result", Occasion::answer, require_method, any, {"result"}, {}},
        {FaultKind::wrong_type, "wrong-type", Occasion::answer, require_method, any, {}, {}},
        {FaultKind::crash, "crash", Occasion::answer, require_method, any, {}, {}},
        {FaultKind::hold, "hold", Occasion::turn, require_signal, any, {}, {"code"}},
        {FaultKind::drop, "drop", Occasion::sending, require_signal, any, {}, {"code"}},
        {FaultKind::duplicate, "duplicate", Occasion::sending, require_signal, any, {}, {"code"}},
        {FaultKind::short_record, "short-record", Occasion::sending, require_signal, of_records, {}, {"code"}},
        {FaultKind::no_digits, "no-digits", Occasion::sending, require_signal, of_records, {}, {"code"}},
        {FaultKind::wrong_variant, "wrong-variant", Occasion::sending, require_signal, of_results, {}, {"code"}},
        {FaultKind::device_full, "device-full", Occasion::writing, require_device, any, {}, {}},
        {FaultKind::device_pulled, "device-pulled", Occasion::presence, require_device, any, {}, {}},
    };
    return table;
}

struct Option {
    std::string_view name;
    const char *type;
    bool is_for_all; ///< every fault may have it
    void (*store)(FaultOptions &options, GVariant *value);
};

constexpr Option option_table[] = {
    {"milliseconds", "u", false,
     [](FaultOptions &o, GVariant *value) { o.milliseconds = g_variant_get_uint32(value); }},
    {"error", "s", false, [](FaultOptions &o, GVariant *value) { o.error = g_variant_get_string(value, nullptr); }},
    {"message", "s", false, [](FaultOptions &o, GVariant *value) { o.message = g_variant_get_string(value, nullptr); }},
    {"result", "i", false, [](FaultOptions &o, GVariant *value) { o.result = g_variant_get_int32(value); }},
    {"code", "i", false, [](FaultOptions &o, GVariant *value) { o.code = g_variant_get_int32(value); }},
    {"times", "u", true, [](FaultOptions &o, GVariant *value) { o.times = g_variant_get_uint32(value); }},
    {"probability", "d", true, [](FaultOptions &o, GVariant *value) { o.probability = g_variant_get_double(value); }},
    {"seed", "t", true, [](FaultOptions &o, GVariant *value) { o.seed = g_variant_get_uint64(value); }},
};

[[noreturn]] void refuse(const std::string &message) { throw std::invalid_argument(message); }

std::string in_quotes(std::string_view text) { return "'" + std::string(text) + "'"; }

/// "one, two and three".
template <typename List, typename NameOf>
std::string listed(const List &list, NameOf name_of)
{
    std::string text;
    for (auto element = std::begin(list); element != std::end(list); ++element) {
        const bool is_last = std::next(element) == std::end(list);
        text += (text.empty() ? "" : is_last ? " and " : ", ") + std::string(name_of(*element));
    }
    return text;
}

const Kind &kind_named(const std::string &name)
{
    const auto found =
        std::find_if(kinds().begin(), kinds().end(), [&](const Kind &kind) { return name == kind.name; });
    if (found == kinds().end())
        refuse("there is no fault " + in_quotes(name) + ", but " +
               listed(kinds(), [](const Kind &kind) { return kind.name; }));
    return *found;
}

bool has(const Names &names, std::string_view name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool takes(const Kind &kind, const Option &option)
{
    return option.is_for_all || has(kind.required, option.name) || has(kind.allowed, option.name);
}

const Option &option_named(const Kind &kind, std::string_view name)
{
    const auto *found = std::find_if(std::begin(option_table), std::end(option_table),
                                     [&](const Option &option) { return option.name == name && takes(kind, option); });
    if (found != std::end(option_table))
        return *found;
    std::vector<std::string_view> taken;
    for (const Option &option : option_table)
        if (takes(kind, option))
            taken.push_back(option.name);
    refuse("the fault " + in_quotes(kind.name) + " has no option " + in_quotes(name) + ", but " +
           listed(taken, [](std::string_view option) { return option; }));
}

FaultOptions read_options(const Kind &kind, GVariant *given)
{
    FaultOptions options;
    Names seen;
    GVariantIter iterator;
    const char *name = nullptr;
    GVariant *boxed = nullptr;
    g_variant_iter_init(&iterator, given);
    while (g_variant_iter_next(&iterator, "{&sv}", &name, &boxed) != FALSE) {
        const pvr::OwnedVariant value(boxed);
        const Option &option = option_named(kind, name);
        if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE(option.type)) == FALSE)
            refuse("the option " + in_quotes(name) + " is of type " + option.type + ", not " +
                   g_variant_get_type_string(value.get()));
        option.store(options, value.get());
        seen.push_back(option.name);
    }
    for (const std::string_view required : kind.required)
        if (!has(seen, required))
            refuse("the fault " + in_quotes(kind.name) + " needs the option " + in_quotes(required));
    if (options.probability &&
        !(*options.probability >= 0 && *options.probability <= 1)) // what is no number is neither
        refuse("the option 'probability' is from 0 to 1");
    if (has(seen, "seed") && !options.probability)
        refuse("the option 'seed' goes with a 'probability'");
    if (has(seen, "error") && g_dbus_is_error_name(options.error.c_str()) == FALSE)
        refuse(in_quotes(options.error) + " cannot be the name of an error");
    return options;
}

void require_method(const Kind &kind, const std::string &name, const std::vector<std::string> &)
{
    const GDBusMethodInfo *method =
        g_dbus_interface_info_lookup_method(org_vexan_tv_pvr_interface_info(), name.c_str());
    if (method == nullptr)
        refuse("org.vexan.tv.pvr has no method " + in_quotes(name));
    if (kind.kind != FaultKind::result)
        return;
    for (GDBusArgInfo **output = method->out_args; output != nullptr && *output != nullptr; ++output)
        if (std::string_view((*output)->name) == "result")
            return;
    refuse("the method " + in_quotes(name) + " answers no result");
}

void require_signal(const Kind &kind, const std::string &name, const std::vector<std::string> &)
{
    if (g_dbus_interface_info_lookup_signal(org_vexan_tv_pvr_interface_info(), name.c_str()) == nullptr)
        refuse("org.vexan.tv.pvr has no signal " + in_quotes(name) + ", but " + std::string(of_results) + " and " +
               std::string(of_records));
    if (kind.only != any && name != kind.only)
        refuse("the fault " + in_quotes(kind.name) + " is one of " + std::string(kind.only) + ", not of " + name);
}

void require_device(const Kind &, const std::string &name, const std::vector<std::string> &devices)
{
    if (std::find(devices.begin(), devices.end(), name) != devices.end())
        return;
    const std::string others = listed(devices, [](const std::string &device) { return device; });
    refuse("there is no device " + in_quotes(name) + (others.empty() ? ", nor any other" : ", but " + others));
}

} // namespace

const char *name_of(FaultKind kind)
{
    return std::find_if(kinds().begin(), kinds().end(), [&](const Kind &known) { return known.kind == kind; })->name;
}

std::optional<FaultKind> fault_kind_named(const std::string &name)
{
    const auto found =
        std::find_if(kinds().begin(), kinds().end(), [&](const Kind &known) { return known.name == name; });
    return found == kinds().end() ? std::nullopt : std::optional(found->kind);
}

std::string type_of_fault_option(const std::string &name)
{
    const auto *found = std::find_if(std::begin(option_table), std::end(option_table),
                                     [&](const Option &option) { return option.name == name; });
    return found == std::end(option_table) ? "" : found->type;
}

FaultPlan planned_fault(const std::string &kind, const std::string &target, GVariant *options,
                        const std::vector<std::string> &devices)
{
    pvr::OwnedVariant given(g_variant_ref_sink(options));
    const Kind &known = kind_named(kind);
    known.check(known, target, devices);
    FaultOptions read = read_options(known, given.get());
    return {known.kind, known.occasion, target, std::move(read), std::move(given)};
}

} // namespace simulator
