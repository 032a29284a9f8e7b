// What becomes of a call that a fault strikes.
#pragma once

#include "fault_kinds.h"

#include <gio/gio.h>
#include <string>

namespace simulator {

/// In words, for the log; the end of the call is yet to come.
std::string shown_fault(const FaultPlan &plan);

/// Ends a call as the fault has it, without carrying it out. The invocation is taken over.
void strike(GDBusMethodInvocation *invocation, const FaultPlan &plan);

} // namespace simulator
