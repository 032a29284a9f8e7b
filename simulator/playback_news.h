// How an application learns what happened to a playback.
#pragma once

#include "player.h"
#include "signals.h"

namespace simulator {

/// Queues the signals that tell of an event; of became_busy the set as a whole tells.
void announce_playback(Signals &signals, const PlaybackEvent &event);

} // namespace simulator
