// Every remote function with any reply of the service: of its own type or of another, an error, or none. The functions,
// their outputs and what comes of them are the rows that the tests on a real bus are made of.
#include "bus/remote_call.h"
#include "pvr_service_api.h"
#include "support/bus.h"
#include "support/check.h"
#include "support/complaints.h"
#include "support/input.h"
#include "support/log_capture.h"
#include "support/variant.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using namespace fuzz;

namespace {

constexpr int failed = -2;

// ---- The functions.

/// A function that asks more than once, or waits for no answer: what comes of it depends on more than one reply.
template <typename Call>
RemoteCall compound(const std::string &name, Call call)
{
    return {.name = name,
            .call = std::move(call),
            .untouched = {},
            .entry = {},
            .is_checked = true,
            .request = {},
            .result = RemoteCall::Result::is_the_answer,
            .outcomes = {},
            .call_with_null_outputs = {}};
}

std::vector<RemoteCall> compounds()
{
    constexpr std::size_t room = 3;
    return {
        compound("svc_pvr_get_recording_no_ts_service_id_list",
                 [](std::ostream &) {
                     Block list(room * sizeof(std::uint64_t));
                     int count = 0;
                     const int returned = svc_pvr_get_recording_no_ts_service_id_list(
                         reinterpret_cast<std::uint64_t *>(list.data()), room, &count);
                     check(returned == failed || (count >= 0 && count <= static_cast<int>(room)),
                           "no more is counted than there is room for");
                     return returned;
                 }),
        compound("svc_pvr_get_remaining_time",
                 [](std::ostream &) {
                     int remaining = 0;
                     return svc_pvr_get_remaining_time(1, &remaining);
                 }),
        compound("svc_pvr_stop_pvr_sync", [](std::ostream &) { return svc_pvr_stop_pvr_sync(7, "app"); }),
    };
}

const std::vector<RemoteCall> &rows()
{
    static const std::vector<RemoteCall> all =
        joined({channel_calls(), device_calls(), list_calls(), playback_calls(), recording_calls(),
                recording_files_calls(), recording_state_calls(), status_calls(), compounds()});
    return all;
}

Variant parsed(const std::string &text)
{
    return Variant(g_variant_ref_sink(g_variant_parse(nullptr, text.c_str(), nullptr, nullptr, nullptr)));
}

/// The type that each method answers with.
const std::map<std::string, std::string> &answer_types()
{
    static const std::map<std::string, std::string> types = [] {
        std::map<std::string, std::string> found;
        for (const RemoteCall &row : rows())
            if (!row.outcomes.empty())
                found[row.request.method] = g_variant_get_type_string(parsed(row.outcomes.front().answer).get());
        return found;
    }();
    return types;
}

/// What a function may return: those codes that its documentation lists, or any when it hands on what it was told.
const std::set<int> &codes_of(const std::string &name)
{
    static const std::map<std::string, std::set<int>> codes = [] {
        std::map<std::string, std::set<int>> found;
        for (const RemoteCall &row : rows())
            for (const Outcome &outcome : row.outcomes)
                found[row.name].insert(outcome.returned);
        for (auto &[function, all] : found) {
            const bool is_any = std::ranges::any_of(all, [](int code) { return code != 0 && code != failed; });
            all = is_any ? std::set<int>() : std::set{0, failed};
        }
        return found;
    }();
    static const std::set<int> of_compounds{0, failed};
    const auto found = codes.find(name);
    return found != codes.end() ? found->second : of_compounds;
}

// ---- What the service says.

enum class Kind { answer, other_type, error, nothing, closed, gone, no_reply };
constexpr Kind kinds[] = {Kind::answer, Kind::other_type, Kind::error,   Kind::nothing,
                          Kind::closed, Kind::gone,       Kind::no_reply};

constexpr const char *types[] = {"()",    "(i)",    "(ii)",    "(iii)",        "(u)",     "(x)",       "(t)",
                                 "(s)",   "(si)",   "(d)",     "(b)",          "(y)",     "(o)",       "(g)",
                                 "(v)",   "(av)",   "(ai)",    "(aii)",        "(at)",    "(ati)",     "(aiii)",
                                 "((i))", "(a(v))", "(a(v)i)", "((iisssxx)i)", "(a(ii))", "(a{sv})",   "(avi)",
                                 "(as)",  "(xxi)",  "(iix)",   "(ay)",         "(ayi)",   "((uuiii))", "((uuiii)i)"};

/// One after another, each taken from the input.
class Service {
public:
    explicit Service(Input &input) : input_(input) {}

    GVariant *answer(const std::string &method, GError **error)
    {
        const Kind kind = input_.choice(kinds);
        const std::size_t type = input_.byte();
        const std::size_t size = input_.byte() | std::size_t{input_.byte()} << 8;
        const Bytes bytes = input_.take(size);
        switch (kind) {
        case Kind::answer:
        case Kind::other_type:
            return value(method, kind == Kind::answer ? nullptr : types[type % std::size(types)], bytes);
        case Kind::error:
            g_set_error(error, G_IO_ERROR, static_cast<int>(type), "%.*s", static_cast<int>(bytes.size()),
                        reinterpret_cast<const char *>(bytes.data()));
            break;
        case Kind::nothing:
            break;
        case Kind::closed:
            bus.is_closed = true;
            g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_CLOSED, "The connection is closed");
            break;
        case Kind::gone:
            bus.owner = (type & 1) != 0 ? ":1.7" : nullptr;
            g_set_error_literal(error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN, "%s%n");
            break;
        case Kind::no_reply:
            g_set_error_literal(error, G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY, "");
            break;
        }
        return nullptr;
    }

    /// Whether every call so far was answered by a value of its type.
    bool has_answered() const noexcept { return has_answered_; }

private:
    GVariant *value(const std::string &method, const char *type, Bytes bytes)
    {
        const auto own = answer_types().find(method);
        check(own != answer_types().end(), "every method that is called has a row");
        blocks_.emplace_back(bytes);
        has_answered_ = has_answered_ && (type == nullptr || own->second == type);
        return from_bytes(type != nullptr ? type : own->second.c_str(), blocks_.back());
    }

    Input &input_;
    bool has_answered_ = true;
    std::vector<Block> blocks_;
};

// ---- The inputs to begin with: what the rows say that the service answers, and each other way of a few.

void write_seed(const std::filesystem::path &folder, std::size_t row, Kind kind, const Variant &answer)
{
    const std::size_t size = answer ? g_variant_get_size(answer.get()) : 0;
    if (size > 4000)
        return;
    const auto byte = [](std::size_t number) { return static_cast<char>(number & 0xff); };
    std::size_t chosen = 128;
    while (kinds[chosen % std::size(kinds)] != kind)
        ++chosen;
    std::string seed{byte(row), byte(row >> 8), 0, byte(chosen), 0, byte(size), byte(size >> 8)};
    if (answer)
        seed.append(static_cast<const char *>(g_variant_get_data(answer.get())), size);
    static int count = 0;
    std::ofstream(folder / std::to_string(count++), std::ios::binary) << seed;
}

void write_seeds(const std::filesystem::path &folder)
{
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    for (std::size_t row = 0; row < rows().size(); ++row) {
        for (const Outcome &outcome : rows()[row].outcomes)
            write_seed(folder, row, Kind::answer, parsed(outcome.answer));
        for (const Kind kind : kinds)
            write_seed(folder, row, kind, kind == Kind::other_type ? parsed("(1, 'a')") : nullptr);
    }
}

} // namespace

/// Memory that was freed is kept from use for a while; in less of it the caches serve better.
extern "C" const char *__asan_default_options() { return "quarantine_size_mb=16"; }

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    make_complaints_findings();
    GTEST_FLAG_SET(break_on_failure, true); // the rows look behind their buffers with expectations
    if (const char *folder = std::getenv("PVR_FUZZ_SEEDS")) {
        write_seeds(folder);
        std::_Exit(0);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Input input(data, size);
    const std::size_t chosen = input.byte() | std::size_t{input.byte()} << 8;
    const RemoteCall &row = rows()[chosen % rows().size()];
    const bool has_outputs = (input.byte() & 1) == 0 || !row.call_with_null_outputs;

    Service service(input);
    bus = {};
    bus.answer = [&service](const char *method, GError **error) { return service.answer(method, error); };
    std::ostringstream outputs;
    const int returned = has_outputs ? row.call(outputs) : row.call_with_null_outputs();
    support::logged();
    check(support::malformed_lines().empty(), "every line has its head and its end");

    const std::set<int> &codes = codes_of(row.name);
    check(codes.empty() || codes.contains(returned), "a function returns what its documentation lists");
    if (!row.outcomes.empty() && !service.has_answered()) {
        check(returned == failed, "what is no answer of its type is a failed call");
        check(!has_outputs || outputs.str() == row.untouched, "and leaves the outputs alone");
    }
    return 0;
}
