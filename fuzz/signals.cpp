// The service's two signals with any parameters, by the library's handler, and callbacks of every kind that hear of
// them.
#include "events/browser_queue.h"
#include "events/callbacks.h"
#include "events/result_rows.h"
#include "events/subscribe.h"
#include "support/check.h"
#include "support/input.h"
#include "support/scan.h"
#include "support/variant.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

using namespace fuzz;

namespace {

// ---- Who listens, and what it hears.

enum Listener : unsigned {
    result = 1,
    result_pointer = 2,
    others = 4,
    state = 8,
    signal_record = 16,
    signal_pointer = 32,
    signal_list = 64,
    browser = 128,
};

struct Heard {
    int results = 0, result_pointers = 0, others = 0, states = 0, signals = 0, signal_pointers = 0, thumbnails = 0;
    pvr_service_result result{};
    pvr_service_signal signal{};
    pvr_result_third third{};
    int state = 0;
    int thumbnail_status = 0;

    int count() const { return results + result_pointers + others + states + signals + signal_pointers + thumbnails; }
};
Heard heard;

void check_own(const void *user_data) { check(user_data == &heard, "a callback gets its own user data"); }

template <typename Record>
bool same(const Record &one, const Record &other)
{
    return std::memcmp(&one, &other, sizeof one) == 0;
}

void hear_result(pvr_service_result record, void *user_data)
{
    check_own(user_data);
    ++heard.results;
    heard.result = record;
}

void hear_result_pointer(pvr_service_result *record, void *user_data)
{
    check_own(user_data);
    check(heard.results == 0 || same(*record, heard.result), "both callbacks for results get the same record");
    ++heard.result_pointers;
    heard.result = *record;
    std::memset(record, 0xff, sizeof *record); // the callback's own
}

void hear_others(pvr_result_third record, void *user_data)
{
    check_own(user_data);
    ++heard.others;
    heard.third = record;
}

void hear_state(int now, void *user_data)
{
    check_own(user_data);
    ++heard.states;
    heard.state = now;
}

void hear_signal(pvr_service_signal record, void *user_data)
{
    check_own(user_data);
    check(heard.signals + heard.signal_pointers == 0 || same(record, heard.signal),
          "all callbacks for signals get the same record");
    ++heard.signals;
    heard.signal = record;
}

void hear_signal_pointer(pvr_service_signal *record, void *user_data)
{
    hear_signal(*record, user_data);
    --heard.signals;
    ++heard.signal_pointers;
    std::memset(record, 0xff, sizeof *record);
}

void hear_thumbnail(int event, int, int, int status, void *user_data)
{
    check_own(user_data);
    check(event == 6, "a thumbnail is told of as one");
    ++heard.thumbnails;
    heard.thumbnail_status = status;
}

constexpr char awaited[] = "/m/a.srf";
constexpr char awaited_by_nobody[] = "/m/b.srf"; ///< but by a node without a callback

void wait_for_thumbnail(const char *location, pvr::BrowserCallback callback)
{
    auto *node = static_cast<pvr::BrowserNode *>(std::calloc(1, sizeof(pvr::BrowserNode)));
    node->callback = callback;
    node->user_data = &heard;
    std::strcpy(node->location, location);
    node->next = std::exchange(pvr::browser_queue, node);
}

void forget_thumbnails()
{
    while (pvr::browser_queue != nullptr)
        std::free(std::exchange(pvr::browser_queue, pvr::browser_queue->next));
}

void listen(unsigned listeners)
{
    const auto put = [&]<typename Function>(unsigned which, pvr::Slot<Function> &slot, Function function) {
        slot.set((listeners & which) != 0 ? function : nullptr, &heard);
    };
    put(result, pvr::to_pvr_app, hear_result);
    put(result_pointer, pvr::to_pvr_app_point, hear_result_pointer);
    put(others, pvr::to_other_apps, hear_others);
    put(state, pvr::to_pvr_get_state, hear_state);
    put(signal_record, pvr::signal_cb_func, hear_signal);
    put(signal_pointer, pvr::signal_pointer_cb_func, hear_signal_pointer);
    for (const unsigned index : {0U, 4U}) { // with gaps between
        pvr::SignalListEntry &entry = pvr::g_signal_cb_list[index];
        entry.function = hear_signal;
        entry.user_data = &heard;
        entry.is_used = (listeners & signal_list) != 0 ? 1 : 0;
    }
    forget_thumbnails();
    if ((listeners & browser) != 0) {
        wait_for_thumbnail(awaited, hear_thumbnail);
        wait_for_thumbnail(awaited_by_nobody, nullptr);
    }
    heard = {};
}

// ---- What must be heard.

void check_silence()
{
    check(heard.count() == 0, "what cannot be understood, and what nobody listens to, is told to nobody");
}

/// Of the parameters in normal form, which GLib makes of whatever they were.
void check_signal(GVariant *parameters, unsigned listeners)
{
    int type = 0;
    const char *text = "";
    if (is_of(parameters, "(is)"))
        g_variant_get(parameters, "(i&s)", &type, &text);
    if (std::strlen(text) != 2 * sizeof(pvr_service_signal) || type <= 0 || type >= 20)
        return check_silence();

    pvr_service_signal record;
    auto *bytes = reinterpret_cast<std::uint8_t *>(&record);
    for (std::size_t i = 0; i < sizeof record; ++i)
        bytes[i] = scanned(static_cast<std::uint8_t>(text[2 * i]), static_cast<std::uint8_t>(text[2 * i + 1]));
    const int records = ((listeners & signal_record) != 0 ? 1 : 0) + ((listeners & signal_list) != 0 ? 2 : 0);
    const int pointers = (listeners & signal_pointer) != 0 ? 1 : 0;
    check(heard.signals == records && heard.signal_pointers == pointers, "each callback for signals is called once");
    check(records + pointers == 0 || same(heard.signal, record), "the record is what the digits say");
    check(heard.count() == records + pointers, "and no other callback");
}

/// What the members of the inner value say, told apart by their types and places alone.
struct Members {
    pvr_service_result record{};
    int uid = 0, record_type = 0, state = 0, status = 0;
    std::string location;
};

void take_number(Members &members, pvr::Place place, int number)
{
    using enum pvr::Place;
    const std::pair<pvr::Place, int *> others_places[] = {{uid, &members.uid},
                                                          {record_type, &members.record_type},
                                                          {pvr::Place::state, &members.state},
                                                          {status, &members.status}};
    for (const auto &[known, to] : others_places)
        if (place == known)
            *to = number;
    pvr_service_result &record = members.record;
    if (place == handle)
        record.handle = number;
    else if (place == pvr::Place::result)
        record.result = number;
    else if (place == current_state)
        record.current_state = number;
    else if (place == duration)
        record.duration = number;
    else if (place == detail_result)
        record.detail_result = number;
    else if (place == narrow_service_id)
        record.service_id = static_cast<std::uint32_t>(number);
}

Members members_of(const pvr::ResultRow &row, GVariant *inner)
{
    Members members;
    members.record.method = row.method;
    const std::size_t count = row.signature != nullptr ? g_variant_n_children(inner) : 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Variant member(g_variant_get_child_value(inner, i));
        if (is_of(member.get(), "t")) {
            members.record.service_id = g_variant_get_uint64(member.get());
        } else if (is_of(member.get(), "s") && row.places[i] == pvr::Place::location) {
            members.location = g_variant_get_string(member.get(), nullptr);
        } else if (is_of(member.get(), "s")) {
            const std::string text = g_variant_get_string(member.get(), nullptr);
            text.copy(members.record.mnt_path, sizeof members.record.mnt_path - 1);
        } else {
            take_number(members, row.places[i], g_variant_get_int32(member.get()));
        }
    }
    return members;
}

void check_app(const pvr::ResultRow &row, const Members &members, unsigned listeners)
{
    const bool is_told = row.app != pvr::AppLine::none;
    check(heard.results == (is_told && (listeners & result) != 0 ? 1 : 0), "the recorder is told once, by value");
    check(heard.result_pointers == (is_told && (listeners & result_pointer) != 0 ? 1 : 0), "and once by pointer");
    check(heard.results + heard.result_pointers == 0 || same(heard.result, members.record),
          "the record is what the members say");
}

void check_others(const pvr::ResultRow &row, const Members &members, unsigned listeners)
{
    using enum pvr::Others;
    const bool is_state = row.others == pvr::Others::state && (listeners & Listener::state) != 0;
    check(heard.states == (is_state ? 1 : 0) && heard.state == (is_state ? members.state : 0),
          "a change of state is told to who asked for it");
    const bool is_awaited = row.others == thumbnail && members.location == awaited && (listeners & browser) != 0;
    check(heard.thumbnails == (is_awaited ? 1 : 0) && heard.thumbnail_status == (is_awaited ? members.status : 0),
          "a thumbnail is told to who waits for it");

    const bool is_unsaid =
        row.others == recording && (members.record_type == PS_RECORD_TYPE_NONE ||
                                    (row.method == PS_PRECHECK_RECORDING_AVAILABLE && members.record.result == 0));
    const bool is_for_others = row.others != none && row.others != pvr::Others::state && row.others != thumbnail;
    const bool is_told = is_for_others && !is_unsaid && (listeners & others) != 0;
    check(heard.others == (is_told ? 1 : 0), "other applications are told what is for them");
    if (!is_told)
        return;
    const pvr_result_third &third = heard.third;
    const bool has_ids = row.others == recording || row.others == launch_failed;
    check(third.service_id == (has_ids ? members.record.service_id : 0), "of the service that it is about");
    check(third.UID == (has_ids ? members.uid : row.others == duration_set ? -1 : 0), "and of the recording");
    check(third.result == 0 || third.result == 1, "it is done or it is not");
    check(third.third_part_method >= PS_METHOD_TYPE_NONE && third.third_part_method < PS_METHOD_TYPE_MAX,
          "what is told has a name");
}

void check_result(GVariant *parameters, unsigned listeners)
{
    if (!is_of(parameters, "(iv)"))
        return check_silence();
    int method = 0;
    GVariant *boxed = nullptr;
    g_variant_get(parameters, "(iv)", &method, &boxed);
    const Variant inner(boxed);
    const pvr::ResultRow *row = pvr::result_row(method);
    if (row == nullptr || (row->signature != nullptr && !is_of(inner.get(), row->signature)))
        return check_silence();
    const Members members = members_of(*row, inner.get());
    check_app(*row, members, listeners);
    check_others(*row, members, listeners);
    check(heard.signals == 0 && heard.signal_pointers == 0, "a result is no signal");
}

constexpr const char *names[] = {"send_pvr_signal_to_apps", "result_to_apps", "results_to_apps", "", nullptr};
constexpr const char *senders[] = {":1.7", nullptr, ""};
constexpr const char *types[] = {nullptr, "(is)", "(iv)", "(i)", "(si)", "(isi)", "(ivi)", "(ias)",
                                 "()",    "i",    "s",    "v",   "as",   "a{sv}", "(uv)",  "(xs)"};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Input input(data, size);
    const char *const name = input.choice(names);
    const char *const type = input.choice(types);
    const unsigned listeners = 0xff ^ input.byte();
    const std::uint8_t chosen_sender = input.byte();
    const std::string_view called = name != nullptr ? name : "";
    const bool is_result = called == "result_to_apps";

    const Block bytes(input.rest());
    const bool are_missing = chosen_sender == 255;
    const char *const usual_type = is_result ? "(iv)" : "(is)";
    const Variant parameters(are_missing ? nullptr : from_bytes(type != nullptr ? type : usual_type, bytes));
    listen(listeners);
    pvr::_signal_subscribe(nullptr, senders[chosen_sender % std::size(senders)], name, parameters.get(), nullptr);

    const Variant normal(are_missing ? nullptr : g_variant_get_normal_form(parameters.get()));
    if (called == "send_pvr_signal_to_apps")
        check_signal(normal.get(), listeners);
    else if (is_result)
        check_result(normal.get(), listeners);
    else
        check_silence();
    listen(0);
    return 0;
}
