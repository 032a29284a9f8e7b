// Which CPU the client runs on. Bus and service stay on the shared one, so that only the client
// moves; times are compared within one placement alone.
#pragma once

#include <sys/types.h>

namespace bench {

enum class Placement {
    one_cpu, ///< client, bus and service on one CPU
    own_cpu, ///< the client on a CPU of its own
};

/// Whether this machine lets the client have a CPU of its own.
bool has_own_cpu();

/// Pins one thread, 0 for the calling one, and with it what it starts; false when the kernel refuses.
bool pin(pid_t thread, Placement placement);

/// Pins every thread of this process.
void place_client(Placement placement);

} // namespace bench
