// What the steps of a scenario would do, if they were played. They are not.
#include "service.h"

#include <cstdlib>

namespace simulator {

void Service::appear() { std::abort(); }
void Service::vanish() { std::abort(); }
std::uint32_t Faults::add(FaultPlan) { std::abort(); }
void Faults::remove(FaultKind, const std::string &) { std::abort(); }
Outcome Television::tune(std::uint64_t) { std::abort(); }
std::optional<std::uint32_t> TimerRecordings::set(std::uint64_t, std::uint64_t, std::uint64_t) { std::abort(); }
Outcome TimerRecordings::cancel(std::uint32_t) { std::abort(); }

} // namespace simulator
