// What the service's news cost an application: their decoding, their handler, and their whole way from the bus.
#pragma once

#include "callers.h"
#include "rounds.h"

namespace bench {

/// The library's handler alone, beside the unpacking of what it is given.
Group event_handling(Callers &callers);
/// Decoding a record's digits, beside a loop of sscanf.
Group event_decoding();
/// Signals over the bus to the last callback, beside a handler that does nothing; CPU time of the client.
Group event_delivery(Callers &callers);
/// The same, in time: many signals that come at once.
Group event_bursts(Callers &callers);
/// From the wish for a signal, over the service, to the callback.
Group event_latency(Callers &callers);

} // namespace bench
