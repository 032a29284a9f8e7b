// How an application learns what happened to a playback.
#pragma once

#include "player.h"
#include "signals.h"

namespace simulator {

/// Queues the signals that tell of an event.
void announce_playback(Signals &signals, const PlaybackEvent &event);

} // namespace simulator
