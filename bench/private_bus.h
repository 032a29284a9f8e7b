// A private message bus with the echo service on it, both on the shared CPU.
#pragma once

#include "support/private_bus.h"

namespace bench {

class PrivateBus {
public:
    /// Becomes this process's system bus. To be made before GDBus is first used, and by the main thread.
    PrivateBus();

private:
    support::PrivateBus bus_;
    support::ChildProcess service_;
};

} // namespace bench
