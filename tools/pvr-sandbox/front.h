// The process that the user started: it stands for the sandbox towards its parent and its terminal.
#pragma once

#include "options.h"
#include "signals.h"

namespace sandbox {

/// Runs a sandbox and returns the exit status. Two processes guard it: this one passes signals on and
/// waits; its child, the keeper, does the rest. Each ends and removes everything when the other is killed.
int run_sandbox(const Options &options, const InheritedSignals &signals);

} // namespace sandbox
