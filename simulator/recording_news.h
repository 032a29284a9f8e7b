// How an application learns what happened to a recording.
#pragma once

#include "recorder.h"
#include "signals.h"

namespace simulator {

/// Queues the signals that tell of an event.
void announce_recording(Signals &signals, const RecordingEvent &event);

} // namespace simulator
