#include "skeleton.h"

#include "call_faults.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace simulator {
namespace {

struct GatedSkeleton {
    OrgVexanTvPvrSkeleton parent;
    Skeleton *gate;
};

GDBusInterfaceVTable *(*generated_vtable)(GDBusInterfaceSkeleton *);

GDBusInterfaceSkeleton *as_skeleton(OrgVexanTvPvr *object) { return G_DBUS_INTERFACE_SKELETON(object); }

} // namespace

GType Skeleton::type()
{
    static const GType type = g_type_register_static_simple(
        TYPE_ORG_VEXAN_TV_PVR_SKELETON, "PvrSimulatorSkeleton", sizeof(OrgVexanTvPvrSkeletonClass),
        [](gpointer object_class, gpointer) noexcept {
            GDBusInterfaceSkeletonClass *own = G_DBUS_INTERFACE_SKELETON_CLASS(object_class);
            generated_vtable = own->get_vtable;
            own->get_vtable = gated_vtable;
        },
        sizeof(GatedSkeleton), nullptr, static_cast<GTypeFlags>(0));
    return type;
}

/// GDBusInterfaceSkeleton calls whatever this returns; only the method calls are led through the gate.
GDBusInterfaceVTable *Skeleton::gated_vtable(GDBusInterfaceSkeleton *interface)
{
    static GDBusInterfaceVTable vtable = [interface] {
        GDBusInterfaceVTable table = *generated_vtable(interface);
        table.method_call = on_call;
        return table;
    }();
    return &vtable;
}

Skeleton::Skeleton(const Log &log, Latencies latencies)
    : log_(log), latencies_(std::move(latencies)), timer_([this] { pass_what_is_due(); }),
      object_(ORG_VEXAN_TV_PVR(g_object_new(type(), nullptr)))
{
    reinterpret_cast<GatedSkeleton *>(object_)->gate = this;
}

Skeleton::~Skeleton()
{
    unexport();
    g_object_unref(object_);
}

void Skeleton::export_on(GDBusConnection *connection)
{
    pvr::OwnedError error;
    if (g_dbus_interface_skeleton_export(as_skeleton(object_), connection, object_path, error.slot()) == FALSE)
        throw std::runtime_error(std::string("cannot export ") + object_path + ": " + error->message);
}

void Skeleton::unexport()
{
    if (is_exported())
        g_dbus_interface_skeleton_unexport(as_skeleton(object_));
    drop_held();
}

bool Skeleton::is_exported() const { return g_dbus_interface_skeleton_get_connection(as_skeleton(object_)) != nullptr; }

void Skeleton::on_call(GDBusConnection *, const char *sender, const char *, const char *, const char *method,
                       GVariant *arguments, GDBusMethodInvocation *invocation, gpointer object) noexcept
{
    Skeleton &self = *static_cast<GatedSkeleton *>(object)->gate;
    self.calls_.record(sender != nullptr ? sender : "", method, arguments);
    std::chrono::milliseconds wait(self.latencies_.of(method));
    if (const FaultPlan *fault = self.faults_.take(Occasion::arrival, method)) {
        wait += std::chrono::milliseconds(fault->options.milliseconds);
        self.log_.line(shown_call(*g_dbus_method_invocation_get_method_info(invocation), arguments) +
                       "  held back for " + std::to_string(fault->options.milliseconds) + " ms");
    }
    if (wait.count() == 0)
        self.let_in(invocation);
    else
        self.hold(invocation, wait);
}

void Skeleton::let_in(GDBusMethodInvocation *invocation)
{
    const std::string method = g_dbus_method_invocation_get_method_name(invocation);
    if (const FaultPlan *fault = faults_.take(Occasion::answer, method))
        fail(invocation, *fault);
    else
        pass(invocation);
    if (watcher_)
        watcher_(method);
}

void Skeleton::hold(GDBusMethodInvocation *invocation, std::chrono::milliseconds time)
{
    held_.emplace(monotonic_now() + time, invocation);
    timer_.set(held_.begin()->first);
}

void Skeleton::pass_what_is_due()
{
    while (!held_.empty() && held_.begin()->first <= monotonic_now()) {
        GDBusMethodInvocation *invocation = held_.extract(held_.begin()).mapped();
        let_in(invocation);
    }
    timer_.set(held_.empty() ? std::nullopt : std::optional(held_.begin()->first));
}

void Skeleton::drop_held()
{
    timer_.set(std::nullopt);
    for (const auto &[moment, invocation] : held_)
        g_object_unref(invocation);
    held_.clear();
}

void Skeleton::pass(GDBusMethodInvocation *invocation)
{
    faults_.call_passes();
    generated_vtable(as_skeleton(object_))
        ->method_call(g_dbus_method_invocation_get_connection(invocation),
                      g_dbus_method_invocation_get_sender(invocation),
                      g_dbus_method_invocation_get_object_path(invocation),
                      g_dbus_method_invocation_get_interface_name(invocation),
                      g_dbus_method_invocation_get_method_name(invocation),
                      g_dbus_method_invocation_get_parameters(invocation), invocation, object_);
}

void Skeleton::fail(GDBusMethodInvocation *invocation, const FaultPlan &fault)
{
    log_.line(shown_call(*g_dbus_method_invocation_get_method_info(invocation),
                         g_dbus_method_invocation_get_parameters(invocation)) +
              "  " + shown_fault(fault));
    strike(invocation, fault);
}

} // namespace simulator
