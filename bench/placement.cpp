#include "placement.h"

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <sched.h>
#include <stdexcept>
#include <string>

namespace bench {
namespace {

struct Cpus {
    std::optional<std::size_t> shared;
    std::optional<std::size_t> own;
};

/// The two highest of the CPUs that the process was given: interrupts tend to be served on the lowest.
Cpus given_cpus()
{
    cpu_set_t given;
    CPU_ZERO(&given);
    if (sched_getaffinity(0, sizeof given, &given) != 0)
        throw std::runtime_error("cannot read which CPUs this process may use");
    Cpus cpus;
    for (std::size_t cpu = CPU_SETSIZE; cpu-- > 0 && !cpus.own;) {
        if (CPU_ISSET(cpu, &given))
            (cpus.shared ? cpus.own : cpus.shared) = cpu;
    }
    return cpus;
}

/// Read once, before the first pinning narrows what is given.
const Cpus &cpus()
{
    static const Cpus given = given_cpus();
    return given;
}

} // namespace

bool has_own_cpu() { return cpus().own.has_value(); }

bool pin(pid_t thread, Placement placement)
{
    cpu_set_t wanted;
    CPU_ZERO(&wanted);
    const std::size_t cpu = (placement == Placement::one_cpu ? cpus().shared : cpus().own).value();
    CPU_SET(cpu, &wanted);
    return sched_setaffinity(thread, sizeof wanted, &wanted) == 0;
}

void place_client(Placement placement)
{
    for (const auto &task : std::filesystem::directory_iterator("/proc/self/task")) {
        if (!pin(std::stoi(task.path().filename()), placement) && errno != ESRCH) // ESRCH: it has just ended
            throw std::runtime_error("cannot pin a thread to its CPU");
    }
}

} // namespace bench
