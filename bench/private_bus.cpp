#include "private_bus.h"

#include "placement.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace bench {
namespace {

support::PrivateBus started_bus()
{
    if (!pin(0, Placement::one_cpu)) // what this thread starts inherits it
        throw std::runtime_error("cannot pin the bus and the service to a CPU");
    return {};
}

support::ChildProcess started_service(const support::PrivateBus &bus)
{
    setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().c_str(), 1);
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    return support::ChildProcess({folder / "pvr-bench-service"});
}

} // namespace

PrivateBus::PrivateBus() : bus_(started_bus()), service_(started_service(bus_)) {}

} // namespace bench
