// How an application learns what happened to a storage device.
#pragma once

#include "devices.h"
#include "log.h"
#include "signals.h"

namespace simulator {

/// Queues the signal that tells of an event; one that has none is only logged.
void announce_device(Signals &signals, const Log &log, const DeviceEvent &event);

} // namespace simulator
