// The control interface: how a test or a developer steers the service. On a connection of its own, and so reachable
// while the service is away.
#pragma once

#include "bus.h"
#include "client/owned.h"
#include "log.h"
#include "pvr_simulator_generated.h"
#include "service.h"
#include "timer.h"

#include <functional>
#include <string>
#include <tuple>
#include <variant>

namespace simulator {

class Control {
public:
    /// Comes to the bus. on_bus_lost is called when the bus ends the connection. Throws std::runtime_error.
    Control(Service &service, const Log &log, std::function<void()> on_bus_lost);
    ~Control();
    Control(const Control &) = delete;
    Control &operator=(const Control &) = delete;

    /// Lets happen what is due, as before a call of the service itself.
    void advance();
    /// A call was answered: logs it, and sends what it caused.
    void answered(const std::string &line);

private:
    /// Every method may fail.
    template <typename... Out>
    using Answer = std::variant<std::tuple<Out...>, Failure>;
    using Done = Answer<>;

    Answer<GVariant *> list_calls(guint64 after);
    Done clear_calls();
    Done emit_signal(const char *name, GVariant *arguments);
    Done delay_method(const char *method, guint milliseconds, guint times);
    Done fail_method(const char *method, const char *error, const char *message, guint times);
    Answer<guint> add_fault(const char *kind, const char *target, GVariant *options);
    Done remove_fault(guint id);
    Answer<GVariant *> list_faults();
    Done clear_faults();
    Done tune(guint64 service_id);
    Done set_date(gboolean is_set);
    Done step(guint64 seconds);
    Answer<guint> schedule_recording(guint64 service_id, guint64 in_seconds, guint64 duration);
    Done cancel_recording(guint id);
    Done vanish(guint milliseconds);
    Done come_back();
    Done crash();

    /// With is_only, in place of what there is of this kind for this target.
    Answer<guint> set_fault(const char *kind, const char *target, GVariant *options, bool is_only);
    Done set_only_fault(const char *kind, const char *target, GVariant *options);
    void come_back_by_itself();

    Service &service_;
    const Log &log_;
    Timer return_;
    pvr::Owned<PvrSimulator1, g_object_unref> object_;
    Bus bus_;
};

} // namespace simulator
