// The interface org.vexan.tv.pvr on a connection: the generated skeleton with a gate in front of its dispatch. The gate
// records every call and lets faults apply; a call that passes goes to the generated code, in the same main context.
#pragma once

#include "calls.h"
#include "client/owned.h"
#include "faults.h"
#include "latencies.h"
#include "log.h"
#include "pvr_gdbus_generated.h"
#include "timer.h"

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <utility>

namespace simulator {

class Skeleton {
public:
    static constexpr char object_path[] = "/org/vexan/tv/pvr";

    Skeleton(const Log &log, Latencies latencies);
    ~Skeleton();
    Skeleton(const Skeleton &) = delete;
    Skeleton &operator=(const Skeleton &) = delete;

    OrgVexanTvPvr *object() const { return object_; }
    RecordedCalls &calls() { return calls_; }
    Faults &faults() { return faults_; }

    /// Has somebody told of each call once it is over, also of one that a fault has struck.
    void watch(std::function<void(const std::string &method)> watcher) { watcher_ = std::move(watcher); }

    /// Answers calls on this connection. Throws std::runtime_error.
    void export_on(GDBusConnection *connection);
    /// Leaves the connection. Calls that are held back are never answered.
    void unexport();
    bool is_exported() const;

private:
    static GDBusInterfaceVTable *gated_vtable(GDBusInterfaceSkeleton *interface);
    static void on_call(GDBusConnection *, const char *sender, const char *path, const char *interface,
                        const char *method, GVariant *arguments, GDBusMethodInvocation *invocation,
                        gpointer object) noexcept;
    static GType type();

    void let_in(GDBusMethodInvocation *invocation);
    void hold(GDBusMethodInvocation *invocation, std::chrono::milliseconds time);
    void pass(GDBusMethodInvocation *invocation);
    void fail(GDBusMethodInvocation *invocation, const FaultPlan &fault);
    void pass_what_is_due();
    void drop_held();

    const Log &log_;
    Latencies latencies_;
    std::function<void(const std::string &method)> watcher_;
    RecordedCalls calls_;
    Faults faults_;
    std::multimap<Microseconds, GDBusMethodInvocation *> held_; ///< owned, by the moment when they pass
    Timer timer_;
    OrgVexanTvPvr *object_;
};

} // namespace simulator
