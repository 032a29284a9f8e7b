// The service's signals, as the library is given them and as they come over the bus.
#pragma once

#include "client/owned.h"
#include "pvr_service_api.h"

#include <string>

namespace bench {

/// The digits of a whole record.
std::string record_digits();

/// What comes with a signal that carries a record.
pvr::OwnedVariant signal_parameters();

/// Hands a signal to the library's own handler. Only once it has connected the handler.
void hand_to_library(GVariant *parameters);

/// How many signals have reached the last of the functions that listen. Starts at 0 with each receive().
inline int delivered = 0;

/// A callback of an application that does nothing.
inline void on_signal(pvr_service_signal, void *) { ++delivered; }

/// Has the service send signals, and runs the main context until all have been delivered. False when it sends none.
bool receive(int count);

} // namespace bench
