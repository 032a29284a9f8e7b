// What a handle plays, as the library tells it, and how a command shows it.
#pragma once

#include <cstdint>
#include <pvr_events.h>
#include <string>
#include <vector>

#include "output.h"
#include "service.h"

namespace pvrctl {

/// Whether a state is one of playing, however fast, or of pausing.
inline bool is_playing_state(int state) { return state > PLAY_STATE_NONE && state < PLAY_STATE_STOP; }

struct Playback {
    int handle = 0;
    std::string uri; ///< empty when the handle plays nothing; cut by the library at 254 bytes
    int state = PLAY_STATE_NONE;
    std::int64_t relative_second = 0;
    std::int64_t absolute_second = 0;

    bool is_running() const { return !uri.empty() && state != PLAY_STATE_STOP; }

    /// Whether the service gives a ps_play_state_e for the state. One that plays and gives another number
    /// means something else by it, so that nothing can be concluded.
    bool has_known_state() const { return is_playing_state(state); }
};

Playback playback_of(const Service &service, int handle);

Json playback_json(const Playback &playback);
std::vector<Row> playback_rows(const Playback &playback);

} // namespace pvrctl
