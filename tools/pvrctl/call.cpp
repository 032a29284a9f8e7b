// pvrctl call: any function of the library by its name, with its arguments as words and what it hands out as data.
#include <algorithm>
#include <chrono>
#include <exception>
#include <gio/gio.h>
#include <memory>
#include <optional>
#include <pvr_service_api.h>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "call_row.h"
#include "command.h"
#include "completion.h"
#include "event_loop.h"

namespace pvrctl {
namespace {

constexpr int most_words = 256;

// ---- What a result says.

[[noreturn]] void fail(const ExportedFunction &function, std::int64_t result, const std::string &what)
{
    throw Failure(ExitCode::failed, std::string(function.name) + " returned " + std::to_string(result) + ": " + what);
}

void judge_answered(Service &service, const ExportedFunction &, std::int64_t result)
{
    service.check(static_cast<int>(result));
}

void judge_own(Service &service, const ExportedFunction &, std::int64_t result)
{
    service.check_delivered(static_cast<int>(result));
    if (result != PS_SUCCESS)
        throw Failure(ExitCode::refused, "the service did not do it; it answered " + std::to_string(result));
}

void judge_judged(Service &service, const ExportedFunction &, std::int64_t result)
{
    service.check_delivered(static_cast<int>(result));
    if (result != PS_SUCCESS)
        throw Failure(ExitCode::refused, "the service did not do it, or says no");
}

void judge_answer(Service &service, const ExportedFunction &, std::int64_t result)
{
    service.check_delivered(static_cast<int>(result));
}

/// A process that ends at once may take with it what only stands in line.
void judge_posted(Service &service, const ExportedFunction &function, std::int64_t result)
{
    if (result != PS_SUCCESS)
        service.check(static_cast<int>(result));
    service.check_running();
    if (g_dbus_connection_flush_sync(service.bus(), nullptr, nullptr) == FALSE)
        fail(function, result, "the bus was lost before the request was on its way");
}

void judge_session(Service &, const ExportedFunction &function, std::int64_t result)
{
    if (result != PS_SESSION_READY)
        fail(function, result, "there is no session");
}

void judge_supported(Service &service, const ExportedFunction &, std::int64_t result)
{
    if (result == PS_FACTORY_ERROR)
        throw Failure(ExitCode::not_recording, "the Recording service says that it does not record");
    service.check(static_cast<int>(result));
}

void judge_local(Service &, const ExportedFunction &function, std::int64_t result)
{
    if (result != PS_SUCCESS)
        fail(function, result, "PVR_LOG=stderr may tell why");
}

void judge_product(Service &service, const ExportedFunction &function, std::int64_t result)
{
    if (result != PS_SUCCESS)
        service.check_product();
    judge_local(service, function, result);
}

void judge_told(Service &service, const ExportedFunction &function, std::int64_t result)
{
    if (result == PS_CALL_METHOD_FAILED && !service.has_answered())
        throw service.reason();
    judge_local(service, function, result);
}

void judge_rights(Service &service, const ExportedFunction &function, std::int64_t result)
{
    if (result == PS_CALL_METHOD_FAILED)
        service.check_product();
    if (result == PVR_CA_BAD_ARGUMENT)
        fail(function, result, "the path is empty, or a question is put wrongly");
    if (result == PVR_CA_NO_ANSWER)
        fail(function, result, "there is no conditional-access library, or it did not answer");
    judge_local(service, function, result);
}

void judge_number(Service &, const ExportedFunction &, std::int64_t) {}

struct Rule {
    ResultRule rule;
    const char *meaning; ///< when it counts as done
    bool needs_session;
    void (*judge)(Service &service, const ExportedFunction &function, std::int64_t result);
};
constexpr Rule rules[] = {
    {ResultRule::answered, "it returns 0, which it does once the service has answered", true, judge_answered},
    {ResultRule::judged, "it returns 0, which stands for the service's own success", true, judge_judged},
    {ResultRule::own, "it returns 0; the number is the service's own", true, judge_own},
    {ResultRule::answer, "the service has answered, whatever it returns", true, judge_answer},
    {ResultRule::posted, "it returns 0, and the request is on its way", true, judge_posted},
    {ResultRule::session, "it returns 1", true, judge_session},
    {ResultRule::supported, "it returns 0", true, judge_supported},
    {ResultRule::callback, "it returns 0", true, judge_product},
    {ResultRule::product, "it returns 0; the service need not run", false, judge_product},
    {ResultRule::told, "it returns 0, and the service was told", false, judge_told},
    {ResultRule::local, "it returns 0; the service need not run", false, judge_local},
    {ResultRule::rights, "it returns 0; the service need not run", false, judge_rights},
    {ResultRule::number, "it returns, whatever; the service need not run", false, judge_number},
    {ResultRule::retired, "it returns 0; it is retired, and does nothing", false, judge_local},
};

const Rule &rule_of(const ExportedFunction &function) { return *std::ranges::find(rules, function.rule, &Rule::rule); }

// ---- How a function is shown.

std::string prototype_of(const ExportedFunction &function)
{
    std::string text;
    for (const CallParameter &parameter : function.parameters())
        text += (text.empty() ? "" : ", ") + parameter.type + parameter.name;
    return function.result_type() + std::string(function.name) + '(' + (text.empty() ? "void" : text) + ')';
}

/// The words behind "pvrctl".
std::string usage_of(const ExportedFunction &function)
{
    std::string text = "call " + std::string(function.name);
    for (const CallParameter &parameter : function.parameters())
        if (parameter.is_given)
            text += ' ' + (parameter.takes_rest ? "[FIELD=VALUE...|JSON]" : parameter.name);
    return text;
}

Json parameters_json(const std::vector<CallParameter> &parameters, bool CallParameter::*which)
{
    Json list = Json::array();
    for (const CallParameter &parameter : parameters)
        if (parameter.*which)
            list.push_back({{"name", parameter.name},
                            {"type", parameter.type.substr(0, parameter.type.find_last_not_of(' ') + 1)}});
    return list;
}

Json function_json(const ExportedFunction &function)
{
    const std::vector<CallParameter> parameters = function.parameters();
    return {{"name", function.name},
            {"symbol", function.symbol},
            {"prototype", prototype_of(function)},
            {"retired", function.rule == ResultRule::retired},
            {"arguments", parameters_json(parameters, &CallParameter::is_given)},
            {"outputs", parameters_json(parameters, &CallParameter::is_shown)},
            {"done", rule_of(function).meaning}};
}

std::string function_help(const ExportedFunction &function)
{
    const auto names = [&](bool CallParameter::*which) {
        std::string text;
        for (const CallParameter &parameter : function.parameters())
            if (parameter.*which)
                text += (text.empty() ? "" : ", ") + parameter.name;
        return text.empty() ? "nothing" : text;
    };
    const auto part = [](const std::string &text) { return "  " + wrapped(text, 4) + '\n'; };
    return "The function:\n" + part(prototype_of(function)) + part("pvrctl " + usage_of(function)) +
           part("hands out: " + names(&CallParameter::is_shown)) +
           part(std::string("it is done when ") + rule_of(function).meaning);
}

void list_functions(const Output &output, const std::string &part)
{
    Json functions = Json::array();
    std::string prototypes;
    for (const ExportedFunction &function : exported_functions()) {
        if (function.name.find(part) == std::string_view::npos)
            continue;
        functions.push_back(function_json(function));
        prototypes += prototype_of(function) + '\n';
    }
    if (functions.empty())
        throw Failure(ExitCode::not_found, "no function of the library has '" + part + "' in its name");
    const std::size_t count = functions.size();
    if (output.form() == Output::Form::text)
        output.print(prototypes);
    else
        output.show({{"functions", std::move(functions)}, {"count", count}}, {});
}

// ---- The call.

struct CallWanted {
    std::string name;
    std::vector<std::string> words;
    bool is_list = false;
    std::optional<int> timeout; ///< seconds
    std::optional<int> count;
    const ExportedFunction *function = nullptr;
    ReadyCall call;
};

const ExportedFunction *function_named(const std::string &name)
{
    const std::span functions = exported_functions();
    const auto found = std::ranges::find_if(
        functions, [&](const ExportedFunction &function) { return name == function.name || name == function.symbol; });
    return found != functions.end() ? &*found : nullptr;
}

[[noreturn]] void refuse_line(const ExportedFunction &function, const std::string &message)
{
    throw Failure(ExitCode::usage,
                  message + ". It goes 'pvrctl " + usage_of(function) + "', for " + prototype_of(function));
}

/// Reads the line against the prototype.
void prepare(CallWanted &wanted)
{
    if (wanted.is_list)
        return;
    if (wanted.name.empty())
        throw Failure(ExitCode::usage, "NAME is required. See 'pvrctl call --help'");
    wanted.function = function_named(wanted.name);
    if (wanted.function == nullptr)
        throw Failure(ExitCode::usage,
                      '\'' + wanted.name + "' is no function of the library. See 'pvrctl call --list'");
    const ExportedFunction &function = *wanted.function;
    const std::vector<CallParameter> parameters = function.parameters();
    const auto given = static_cast<std::size_t>(std::ranges::count_if(parameters, &CallParameter::is_given));
    const bool takes_rest = std::ranges::any_of(parameters, &CallParameter::takes_rest);
    const std::size_t least = given - (takes_rest ? 1 : 0);
    if (wanted.words.size() < least || (wanted.words.size() > least && !takes_rest))
        refuse_line(function, std::string(function.name) + " takes " + std::to_string(least) +
                                  (least == 1 ? " argument" : " arguments") + (takes_rest ? " or more" : "") +
                                  ", not " + std::to_string(wanted.words.size()));
    try {
        wanted.call = function.ready(wanted.words);
    } catch (const Failure &failure) {
        refuse_line(function, failure.what());
    }
    if ((wanted.timeout || wanted.count) && function.rule != ResultRule::callback)
        refuse_line(function, "--timeout and --count are for what registers a callback");
}

/// The events that a callback gets, each on a line of its own.
class EventLines {
public:
    EventLines(const Output &output, std::optional<int> most) : output_(output), most_(most) {}

    void take(const Event &event) noexcept
    try {
        if (is_over())
            return;
        ++count_;
        stamp_.show(output_, event);
    } catch (...) {
        failure_ = std::current_exception();
    }

    bool is_over() const { return failure_ || (most_ && count_ >= *most_); }
    int count() const noexcept { return count_; }
    void rethrow() const
    {
        if (failure_)
            std::rethrow_exception(failure_);
    }

private:
    const Output &output_;
    std::optional<int> most_;
    Stamp stamp_;
    int count_ = 0;
    std::exception_ptr failure_;
};

void stay(EventLoop &loop, const EventLines &events, const CallWanted &wanted)
try {
    constexpr std::chrono::minutes seldom{1}; // nothing is looked at but what has come
    const bool is_over = loop.run_until([&] { return events.is_over(); }, wanted.timeout, seldom);
    events.rethrow();
    if (!is_over && wanted.count)
        throw Failure(ExitCode::time_out, std::to_string(events.count()) + " of " + std::to_string(*wanted.count) +
                                              " events came within " + std::to_string(*wanted.timeout) + " s");
} catch (const ReaderGone &) {
    // As for any reader that has seen enough.
}

void make_call(Service &service, const Output &output, const CallWanted &wanted)
{
    const ExportedFunction &function = *wanted.function;
    const Rule &rule = rule_of(function);
    const bool is_staying = wanted.timeout || wanted.count;
    std::optional<EventLoop> loop;
    if (is_staying)
        loop.emplace();
    if (rule.needs_session)
        service.open();
    else
        service.try_bus();
    EventLines events(output, wanted.count);
    EventSink sink = [&events](const Event &event) { events.take(event); };
    Handed handed;
    const std::int64_t result = wanted.call(sink, handed);

    std::vector<Row> rows{{"function", std::string(function.name)}, {"returned", std::to_string(result)}};
    rows.insert(rows.end(), handed.rows.begin(), handed.rows.end());
    output.show({{"function", function.name}, {"returned", result}, {"outputs", handed.data}}, rows);
    rule.judge(service, function, result);
    if (is_staying)
        stay(*loop, events, wanted);
}

} // namespace

void add_call(Commands &commands)
{
    CLI::App &verb = add_command(
        commands.root, "call",
        "Call any function of the library, by the name that the headers give it. Arguments stand in the order of its "
        "prototype; what it hands out is not given, but printed. With --help behind its name it is explained.",
        {"call svc_pvr_is_recording 1", "call svc_pvr_register_signal_cb --count 1", "call svc_pvr_get_handle --json"});
    const auto wanted = std::make_shared<CallWanted>();
    completes(verb.add_option("NAME", wanted->name, "the function; with --list a part of names"), Completes::function);
    const CLI::callback_t store = [wanted](const CLI::results_t &words) {
        wanted->words = words;
        return true;
    };
    // An option that takes any number of words would split those in brackets.
    verb.add_option("ARG", store,
                    "numbers in decimal or with 0x, texts, bytes in hexadecimal; the fields of a record as "
                    "FIELD=VALUE, or as one JSON object. What begins with - and is no number goes behind --")
        ->expected(most_words)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->allow_extra_args(false);
    verb.add_flag("--list", wanted->is_list, "list the functions, with their prototypes");
    const auto timeout = std::make_shared<int>();
    const auto count = std::make_shared<int>();
    const CLI::Option *has_timeout = add_number(verb, "--timeout", *timeout, "SECONDS",
                                                "stay that long, and print the events that the callback gets", 0);
    const CLI::Option *has_count =
        add_number(verb, "--count", *count, "N", "stay until so many have come; with 3 when the time is up before", 1);
    verb.footer([wanted] { // what was there before stands behind it
        const ExportedFunction *function = function_named(wanted->name);
        return function != nullptr ? function_help(*function) : "";
    });
    choose(
        commands, verb,
        [wanted](Service &service, Output &output) {
            wanted->is_list ? list_functions(output, wanted->name) : make_call(service, output, *wanted);
        },
        [wanted, timeout, count, has_timeout, has_count] {
            if (has_timeout->count() > 0)
                wanted->timeout = *timeout;
            if (has_count->count() > 0)
                wanted->count = *count;
            prepare(*wanted);
        });
}

} // namespace pvrctl
