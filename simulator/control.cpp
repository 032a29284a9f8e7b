#include "control.h"

#include "method_row.h"
#include "outcome.h"

#include <csignal>
#include <initializer_list>
#include <stdexcept>
#include <utility>

namespace simulator {
namespace {

constexpr char control_name[] = "org.vexan.tv.pvr.Simulator1";
constexpr char control_path[] = "/org/vexan/tv/pvr_simulator";

Failure wrong_argument(std::string message) { return {"org.freedesktop.DBus.Error.InvalidArgs", std::move(message)}; }

Failure failed(std::string message) { return {"org.freedesktop.DBus.Error.Failed", std::move(message)}; }

/// Options of a fault, floating.
GVariant *vardict(std::initializer_list<std::pair<const char *, GVariant *>> options)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    for (const auto &[name, value] : options)
        g_variant_builder_add(&builder, "{sv}", name, value);
    return g_variant_builder_end(&builder);
}

/// The members of a tuple, each in a variant: a variant that held the tuple could not travel when it is empty.
GVariant *boxed(GVariant *tuple)
{
    GVariantBuilder members;
    g_variant_builder_init(&members, G_VARIANT_TYPE("av"));
    for (std::size_t i = 0; i < g_variant_n_children(tuple); ++i)
        g_variant_builder_add(&members, "v", pvr::OwnedVariant(g_variant_get_child_value(tuple, i)).get());
    return g_variant_builder_end(&members);
}

/// The tuple that these members make up; floating.
GVariant *unboxed(GVariant *members)
{
    GVariantBuilder tuple;
    g_variant_builder_init(&tuple, G_VARIANT_TYPE_TUPLE);
    for (std::size_t i = 0; i < g_variant_n_children(members); ++i) {
        const pvr::OwnedVariant box(g_variant_get_child_value(members, i));
        g_variant_builder_add_value(&tuple, pvr::OwnedVariant(g_variant_get_variant(box.get())).get());
    }
    return g_variant_builder_end(&tuple);
}

} // namespace

#define CONTROL_METHOD(name) &PvrSimulator1Iface::handle_##name, &pvr_simulator1_complete_##name, "handle-" #name

Control::Control(Service &service, const Log &log, std::function<void()> on_bus_lost)
    : service_(service), log_(log), return_([this] { come_back_by_itself(); }), object_(pvr_simulator1_skeleton_new()),
      bus_(std::move(on_bus_lost))
{
    connect(object_.get(), this, CONTROL_METHOD(list_calls), &Control::list_calls);
    connect(object_.get(), this, CONTROL_METHOD(clear_calls), &Control::clear_calls);
    connect(object_.get(), this, CONTROL_METHOD(emit_signal), &Control::emit_signal);
    connect(object_.get(), this, CONTROL_METHOD(delay_method), &Control::delay_method);
    connect(object_.get(), this, CONTROL_METHOD(fail_method), &Control::fail_method);
    connect(object_.get(), this, CONTROL_METHOD(add_fault), &Control::add_fault);
    connect(object_.get(), this, CONTROL_METHOD(remove_fault), &Control::remove_fault);
    connect(object_.get(), this, CONTROL_METHOD(list_faults), &Control::list_faults);
    connect(object_.get(), this, CONTROL_METHOD(clear_faults), &Control::clear_faults);
    connect(object_.get(), this, CONTROL_METHOD(tune), &Control::tune);
    connect(object_.get(), this, CONTROL_METHOD(set_date), &Control::set_date);
    connect(object_.get(), this, CONTROL_METHOD(step), &Control::step);
    connect(object_.get(), this, CONTROL_METHOD(schedule_recording), &Control::schedule_recording);
    connect(object_.get(), this, CONTROL_METHOD(cancel_recording), &Control::cancel_recording);
    connect(object_.get(), this, CONTROL_METHOD(vanish), &Control::vanish);
    connect(object_.get(), this, CONTROL_METHOD(return ), &Control::come_back);
    connect(object_.get(), this, CONTROL_METHOD(crash), &Control::crash);

    pvr::OwnedError error;
    if (g_dbus_interface_skeleton_export(G_DBUS_INTERFACE_SKELETON(object_.get()), bus_.connection(), control_path,
                                         error.slot()) == FALSE)
        throw std::runtime_error(std::string("cannot export ") + control_path + ": " + error->message);
    bus_.own(control_name);
    service_.calls().watch([this](const RecordedCall &call) {
        pvr_simulator1_emit_call_received(object_.get(), call.number, call.monotonic.count(), call.wall.count(),
                                          call.sender.c_str(), call.method.c_str(), boxed(call.arguments.get()));
    });
}

Control::~Control()
{
    service_.calls().watch({});
    g_dbus_interface_skeleton_unexport(G_DBUS_INTERFACE_SKELETON(object_.get()));
}

void Control::advance() { service_.set().advance(); }

void Control::answered(const std::string &line) { service_.set().answered("control: " + line); }

Control::Answer<GVariant *> Control::list_calls(guint64 after)
{
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("a(txxssav)"));
    for (const RecordedCall &call : service_.calls().list())
        if (call.number > after)
            g_variant_builder_add(&list, "(txxss@av)", call.number, gint64{call.monotonic.count()},
                                  gint64{call.wall.count()}, call.sender.c_str(), call.method.c_str(),
                                  boxed(call.arguments.get()));
    return std::tuple(g_variant_builder_end(&list));
}

Control::Done Control::clear_calls()
{
    service_.calls().clear();
    return {};
}

Control::Done Control::emit_signal(const char *name, GVariant *arguments)
{
    if (g_dbus_is_member_name(name) == FALSE)
        return wrong_argument("'" + std::string(name) + "' cannot be the name of a signal");
    if (!service_.is_present())
        return failed("the service is away");
    pvr::OwnedError error;
    if (!service_.emit(name, unboxed(arguments), error.slot()))
        return failed(error->message);
    return {};
}

Control::Answer<guint> Control::set_fault(const char *kind, const char *target, GVariant *options, bool is_only)
{
    try {
        Faults &faults = service_.faults();
        FaultPlan plan = planned_fault(kind, target, options, service_.set().devices.names());
        if (is_only)
            faults.remove(plan.kind, plan.target);
        const guint id = faults.add(std::move(plan));
        advance(); // a device may be out from now on
        return std::tuple(id);
    } catch (const std::invalid_argument &error) {
        return wrong_argument(error.what());
    } catch (const std::length_error &error) {
        return failed(error.what());
    }
}

Control::Answer<guint> Control::add_fault(const char *kind, const char *target, GVariant *options)
{
    return set_fault(kind, target, options, false);
}

Control::Done Control::set_only_fault(const char *kind, const char *target, GVariant *options)
{
    const Answer<guint> answer = set_fault(kind, target, options, true);
    const auto *failure = std::get_if<Failure>(&answer);
    return failure != nullptr ? Done(*failure) : Done();
}

Control::Done Control::delay_method(const char *method, guint milliseconds, guint times)
{
    return set_only_fault(
        "delay", method,
        vardict({{"milliseconds", g_variant_new_uint32(milliseconds)}, {"times", g_variant_new_uint32(times)}}));
}

Control::Done Control::fail_method(const char *method, const char *error, const char *message, guint times)
{
    return set_only_fault("error", method,
                          vardict({{"error", g_variant_new_string(error)},
                                   {"message", g_variant_new_string(message)},
                                   {"times", g_variant_new_uint32(times)}}));
}

Control::Done Control::remove_fault(guint id)
{
    if (!service_.faults().remove(id))
        return wrong_argument("there is no fault " + std::to_string(id));
    advance(); // a device may be back
    return {};
}

Control::Answer<GVariant *> Control::list_faults()
{
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("a(ussa{sv}tt)"));
    for (const Fault &fault : service_.faults().list())
        g_variant_builder_add(&list, "(uss@a{sv}tt)", guint{fault.id}, name_of(fault.plan.kind),
                              fault.plan.target.c_str(), fault.plan.given.get(), guint64{fault.met},
                              guint64{fault.fired});
    return std::tuple(g_variant_builder_end(&list));
}

Control::Done Control::clear_faults()
{
    service_.faults().clear();
    advance(); // devices may be back
    return {};
}

Control::Done Control::tune(guint64 service_id)
{
    if (service_.set().channels.find(service_id) == nullptr)
        return wrong_argument("no such channel");
    if (const Outcome outcome = service_.set().tune(service_id); !outcome.is_done())
        return failed(outcome.reason);
    return {};
}

Control::Done Control::set_date(gboolean is_set)
{
    service_.set().channels.set_date(is_set != FALSE);
    return {};
}

Control::Done Control::vanish(guint milliseconds)
{
    service_.vanish();
    return_.set(milliseconds == 0 ? std::nullopt
                                  : std::optional(monotonic_now() + std::chrono::milliseconds(milliseconds)));
    return {};
}

Control::Done Control::come_back()
{
    return_.set(std::nullopt);
    try {
        service_.appear();
    } catch (const std::runtime_error &error) {
        return failed(error.what());
    }
    return {};
}

Control::Done Control::crash()
{
    log_.line("control: Crash()  the service crashes as asked");
    std::raise(SIGKILL);
    return {};
}

void Control::come_back_by_itself()
{
    try {
        service_.appear();
        log_.line("the service has returned");
    } catch (const std::runtime_error &error) {
        log_.line(std::string("the service stays away: ") + error.what());
    }
}

} // namespace simulator
