// The processes whose parent this one is: those it started, and those it adopted when their parent ended.
#pragma once

#include <chrono>
#include <sys/types.h>
#include <vector>

namespace sandbox {

/// Makes this process the parent of every descendant whose own parent ends.
void adopt_orphans();

/// Read from /proc. A process that has ended counts until it is reaped, so no number in here is
/// somebody else's by the time it is used.
std::vector<pid_t> own_children();

/// Kills and reaps every child, and those that are adopted then, until there is none or the time is up.
/// Takes SIGCHLD, which has to be blocked. Returns whether none is left.
bool kill_children(std::chrono::seconds limit);

} // namespace sandbox
