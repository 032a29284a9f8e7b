#include "signals.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <utility>

namespace simulator {
namespace {

constexpr char result_signal[] = "result_to_apps";
constexpr char record_signal[] = "send_pvr_signal_to_apps";

GVariant *record_body(GVariant *body, void (*spoil)(std::string &digits))
{
    std::int32_t type = 0;
    const char *content = nullptr;
    g_variant_get(body, "(i&s)", &type, &content);
    std::string digits = content;
    spoil(digits);
    return g_variant_new("(is)", type, digits.c_str());
}

GVariant *cut_short(GVariant *body)
{
    return record_body(body, [](std::string &digits) { digits.resize(digits.size() / 2); });
}

GVariant *without_digits(GVariant *body)
{
    return record_body(body, [](std::string &digits) { std::fill(digits.begin(), digits.end(), 'z'); });
}

GVariant *with_another_variant(GVariant *body)
{
    std::int32_t method = 0;
    g_variant_get(body, "(iv)", &method, nullptr);
    return g_variant_new("(iv)", method, g_variant_new_string("of another type"));
}

/// What a fault makes of a signal that is sent.
struct SignalFault {
    FaultKind kind;
    const char *shown;
    int copies;
    GVariant *(*changed)(GVariant *body); ///< null: the body stays as it is
};

constexpr SignalFault signal_faults[] = {
    {FaultKind::drop, "dropped as asked", 0, nullptr},
    {FaultKind::duplicate, "sent twice as asked", 2, nullptr},
    {FaultKind::short_record, "cut short as asked", 1, cut_short},
    {FaultKind::no_digits, "with what are no digits as asked", 1, without_digits},
    {FaultKind::wrong_variant, "with a variant of another type as asked", 1, with_another_variant},
};

const SignalFault &row_of(FaultKind kind)
{
    return *std::find_if(std::begin(signal_faults), std::end(signal_faults),
                         [&](const SignalFault &row) { return row.kind == kind; });
}

} // namespace

// Records travel as they lie in memory.
static_assert(std::endian::native == std::endian::little);

std::string hexadecimal(const pvr_service_signal &record)
{
    constexpr char digits[] = "0123456789abcdef";
    const auto *bytes = reinterpret_cast<const unsigned char *>(&record);
    std::string text;
    text.reserve(2 * sizeof record);
    for (std::size_t i = 0; i < sizeof record; ++i) {
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 0xf];
    }
    return text;
}

pvr_service_signal signal_record(std::int32_t handle, const std::string &uri, std::int32_t state, std::int32_t result)
{
    pvr_service_signal record{};
    record.result = result;
    record.handle = handle;
    record.current_state = state;
    std::copy_n(uri.begin(), std::min(uri.size(), sizeof record.uri - 1), record.uri);
    return record;
}

void Signals::result(ps_method_e method, GVariant *value, std::string text)
{
    queue_.push_back({result_signal, method,
                      pvr::OwnedVariant(g_variant_ref_sink(g_variant_new("(iv)", std::int32_t{method}, value))),
                      std::move(text)});
}

void Signals::notify(ps_signal_type_e type, const pvr_service_signal &record, std::string text)
{
    queue_.push_back(
        {record_signal, type,
         pvr::OwnedVariant(g_variant_ref_sink(g_variant_new("(is)", std::int32_t{type}, hexadecimal(record).c_str()))),
         std::move(text)});
}

void Signals::publish()
{
    GDBusConnection *bus = g_dbus_interface_skeleton_get_connection(G_DBUS_INTERFACE_SKELETON(object_));
    std::vector<Queued> queue = std::exchange(queue_, {});
    if (bus == nullptr) {
        held_.reset();
        return;
    }
    for (Queued &signal : queue)
        send(bus, std::move(signal));
}

void Signals::send(GDBusConnection *bus, Queued signal)
{
    const auto met = [&](Occasion occasion) {
        return faults_ != nullptr ? faults_->take(occasion, signal.name, signal.code) : nullptr;
    };
    if (!held_ && met(Occasion::turn) != nullptr) {
        log_.line("signal: " + signal.text + "  held back as asked");
        held_ = std::move(signal);
        return;
    }
    const FaultPlan *fault = met(Occasion::sending);
    const SignalFault *row = fault != nullptr ? &row_of(fault->kind) : nullptr;
    if (row != nullptr && row->changed != nullptr)
        signal.body = pvr::OwnedVariant(g_variant_ref_sink(row->changed(signal.body.get())));
    const int copies = row != nullptr ? row->copies : 1;
    for (int i = 0; i < copies; ++i)
        emit(bus, signal);
    log_.line("signal: " + signal.text + (row != nullptr ? std::string("  ") + row->shown : ""));
    if (copies > 0 && held_) {
        emit(bus, *held_);
        log_.line("signal: " + held_->text + "  was held back");
        held_.reset();
    }
}

void Signals::emit(GDBusConnection *bus, const Queued &signal)
{
    g_dbus_connection_emit_signal(bus, nullptr,
                                  g_dbus_interface_skeleton_get_object_path(G_DBUS_INTERFACE_SKELETON(object_)),
                                  "org.vexan.tv.pvr", signal.name, signal.body.get(), nullptr);
}

} // namespace simulator
