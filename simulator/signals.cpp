#include "signals.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace simulator {

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

Signals::~Signals()
{
    for (const Queued &signal : queue_)
        if (signal.value != nullptr)
            g_variant_unref(signal.value);
}

void Signals::result(ps_method_e method, GVariant *value, std::string text)
{
    queue_.push_back({method, g_variant_ref_sink(value), {}, std::move(text)});
}

void Signals::notify(ps_signal_type_e type, const pvr_service_signal &record, std::string text)
{
    queue_.push_back({type, nullptr, hexadecimal(record), std::move(text)});
}

void Signals::publish()
{
    const bool is_on_a_bus = g_dbus_interface_skeleton_get_connection(G_DBUS_INTERFACE_SKELETON(object_)) != nullptr;
    for (Queued &signal : std::exchange(queue_, {})) {
        if (is_on_a_bus && signal.value != nullptr)
            org_vexan_tv_pvr_emit_result_to_apps(object_, signal.code, g_variant_new_variant(signal.value));
        else if (is_on_a_bus)
            org_vexan_tv_pvr_emit_send_pvr_signal_to_apps(object_, signal.code, signal.content.c_str());
        if (signal.value != nullptr)
            g_variant_unref(signal.value);
        if (is_on_a_bus)
            log_.line("signal: " + signal.text);
    }
}

} // namespace simulator
