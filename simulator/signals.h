// The service's two signals on their way: they wait until the call that caused them has been answered.
#pragma once

#include "client/owned.h"
#include "faults.h"
#include "log.h"
#include "pvr_events.h"
#include "pvr_gdbus_generated.h"
#include "pvr_records.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

/// The record as it travels: 582 hexadecimal digits, in lower case.
std::string hexadecimal(const pvr_service_signal &record);

/// A record about a handle; the uri is cut to the record's room.
pvr_service_signal signal_record(std::int32_t handle, const std::string &uri, std::int32_t state,
                                 std::int32_t result = 0);

namespace signals {
inline GVariant *packed(std::int32_t value) { return g_variant_new_int32(value); }
inline GVariant *packed(std::uint64_t value) { return g_variant_new_uint64(value); }
inline GVariant *packed(const std::string &value) { return g_variant_new_string(value.c_str()); }
} // namespace signals

/// The inner value of result_to_apps, a tuple with the signature of its values.
template <typename... Value>
GVariant *result_value(const Value &...values)
{
    GVariant *members[] = {signals::packed(values)...};
    return g_variant_new_tuple(members, sizeof...(values));
}

class Signals {
public:
    Signals(OrgVexanTvPvr *object, const Log &log) : object_(object), log_(log) {}
    Signals(const Signals &) = delete;
    Signals &operator=(const Signals &) = delete;

    /// From here on these faults decide what becomes of a signal that is sent.
    void suffer(Faults &faults) { faults_ = &faults; }

    /// Queues result_to_apps; value is a tuple and is taken over. The text is for the log.
    void result(ps_method_e method, GVariant *value, std::string text);
    /// Queues send_pvr_signal_to_apps.
    void notify(ps_signal_type_e type, const pvr_service_signal &record, std::string text);

    /// Sends what is queued, in order, as broadcasts. What is queued while the service is on no bus is lost, and so is
    /// what a fault held back.
    void publish();

private:
    struct Queued {
        const char *name;
        std::int32_t code; ///< the first argument
        pvr::OwnedVariant body;
        std::string text;
    };
    void send(GDBusConnection *bus, Queued signal);
    void emit(GDBusConnection *bus, const Queued &signal);

    OrgVexanTvPvr *object_;
    const Log &log_;
    std::vector<Queued> queue_;
    std::optional<Queued> held_; ///< goes behind the next one that is sent
    Faults *faults_ = nullptr;   ///< null: nothing goes wrong on purpose
};

} // namespace simulator
