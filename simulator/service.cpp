#include "service.h"

#include <stdexcept>
#include <utility>

namespace simulator {
namespace {

constexpr char service_name[] = "org.vexan.tv.pvr.server";

} // namespace

Service::Service(const Log &log, Equipment equipment, std::function<void()> on_bus_lost)
    : on_bus_lost_(std::move(on_bus_lost)), skeleton_(log, equipment.latencies),
      set_(skeleton_.object(), std::move(equipment), log), handles_(skeleton_.object(), set_),
      playback_(skeleton_.object(), set_), recordings_(skeleton_.object(), set_),
      recording_queries_(skeleton_.object(), set_), recording_files_(skeleton_.object(), set_),
      channels_(skeleton_.object(), set_), devices_(skeleton_.object(), set_)
{
    set_.devices.suffer(faults());
    set_.signals.suffer(faults());
}

void Service::appear()
{
    if (bus_)
        return;
    bus_.emplace(on_bus_lost_);
    try {
        // First the object and then the name, so that whoever sees the name can call.
        skeleton_.export_on(bus_->connection());
        bus_->own(service_name);
    } catch (const std::runtime_error &) {
        vanish();
        throw;
    }
}

void Service::vanish()
{
    // First the connection: a caller must not see a service without its interface.
    bus_.reset();
    skeleton_.unexport();
}

void Service::stop() { set_.stop(); }

bool Service::emit(const char *signal, GVariant *body, GError **error)
{
    return g_dbus_connection_emit_signal(bus_->connection(), nullptr, Skeleton::object_path, "org.vexan.tv.pvr", signal,
                                         body, error) != FALSE;
}

} // namespace simulator
