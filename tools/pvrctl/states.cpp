#include "states.h"

#include <algorithm>
#include <array>
#include <pvr_events.h>
#include <pvr_rights.h>
#include <span>

namespace pvrctl {
namespace {

struct State {
    int code;
    const char *name;
    const char *phrase;
};

constexpr std::array play_states{
    State{PLAY_STATE_NONE, "PLAY_STATE_NONE", "no playback"},
    State{PLAY_STATE_PLAY, "PLAY_STATE_PLAY", "playing"},
    State{PLAY_STATE_PAUSE, "PLAY_STATE_PAUSE", "paused"},
    State{PLAY_STATE_FRAME_STEP, "PLAY_STATE_FRAME_STEP", "stepping"},
    State{PLAY_STATE_FF_1, "PLAY_STATE_FF_1", "winding forward, 2 times"},
    State{PLAY_STATE_FF_2, "PLAY_STATE_FF_2", "winding forward, 4 times"},
    State{PLAY_STATE_FF_3, "PLAY_STATE_FF_3", "winding forward, 8 times"},
    State{PLAY_STATE_FF_4, "PLAY_STATE_FF_4", "winding forward, 16 times"},
    State{PLAY_STATE_FF_5, "PLAY_STATE_FF_5", "winding forward, 32 times"},
    State{PLAY_STATE_FF_6, "PLAY_STATE_FF_6", "winding forward, 64 times"},
    State{PLAY_STATE_FF_7, "PLAY_STATE_FF_7", "winding forward, 128 times"},
    State{PLAY_STATE_FF_1_2, "PLAY_STATE_FF_1_2", "slow motion, 1/2"},
    State{PLAY_STATE_FF_1_4, "PLAY_STATE_FF_1_4", "slow motion, 1/4"},
    State{PLAY_STATE_FF_1_8, "PLAY_STATE_FF_1_8", "slow motion, 1/8"},
    State{PLAY_STATE_REW_1, "PLAY_STATE_REW_1", "winding back, 2 times"},
    State{PLAY_STATE_REW_2, "PLAY_STATE_REW_2", "winding back, 4 times"},
    State{PLAY_STATE_REW_3, "PLAY_STATE_REW_3", "winding back, 8 times"},
    State{PLAY_STATE_REW_4, "PLAY_STATE_REW_4", "winding back, 16 times"},
    State{PLAY_STATE_REW_5, "PLAY_STATE_REW_5", "winding back, 32 times"},
    State{PLAY_STATE_REW_6, "PLAY_STATE_REW_6", "winding back, 64 times"},
    State{PLAY_STATE_REW_7, "PLAY_STATE_REW_7", "winding back, 128 times"},
    State{PLAY_STATE_REW_1_2, "PLAY_STATE_REW_1_2", "slow motion backwards, 1/2"},
    State{PLAY_STATE_REW_1_4, "PLAY_STATE_REW_1_4", "slow motion backwards, 1/4"},
    State{PLAY_STATE_REW_1_8, "PLAY_STATE_REW_1_8", "slow motion backwards, 1/8"},
    State{PLAY_STATE_STOP, "PLAY_STATE_STOP", "stopped"},
};

constexpr std::array record_states{
    State{PS_RECORD_STATE_STOP, "PS_RECORD_STATE_STOP", "no recording"},
    State{PS_RECORD_STATE_PREPARING, "PS_RECORD_STATE_PREPARING", "preparing"},
    State{PS_RECORD_STATE_REC, "PS_RECORD_STATE_REC", "recording"},
    State{PS_RECORD_STATE_PENDING, "PS_RECORD_STATE_PENDING", "pending"},
    State{PS_RECORD_STATE_PAUSE, "PS_RECORD_STATE_PAUSE", "paused"},
};

constexpr std::array record_types{
    State{PS_RECORD_TYPE_NONE, "PS_RECORD_TYPE_NONE", "no recording"},
    State{PS_RECORD_TYPE_NORMAL, "PS_RECORD_TYPE_NORMAL", "normal recording"},
    State{PS_RECORD_TYPE_TIMESHIFT_PLAY, "PS_RECORD_TYPE_TIMESHIFT_PLAY", "watched timeshift"},
    State{PS_RECORD_TYPE_TIMESHIFT_PAUSE, "PS_RECORD_TYPE_TIMESHIFT_PAUSE", "paused timeshift"},
    State{PS_RECORD_TYPE_TIMER, "PS_RECORD_TYPE_TIMER", "timer recording"},
    State{PS_RECORD_TYPE_SEGMENT, "PS_RECORD_TYPE_SEGMENT", "segment recording"},
    State{PS_RECORD_TYPE_COMPOSITE, "PS_RECORD_TYPE_COMPOSITE", "composite recording"},
};

constexpr std::array standards{
    State{PVR_DTV_ATSC, "PVR_DTV_ATSC", "ATSC"},
    State{PVR_DTV_DVB, "PVR_DTV_DVB", "DVB"},
    State{PVR_DTV_DVB_ISDB, "PVR_DTV_DVB_ISDB", "DVB and ISDB"},
};

Json as_json(std::span<const State> states, int code)
{
    const auto state = std::ranges::find(states, code, &State::code);
    return {{"code", code}, {"name", state != states.end() ? Json(state->name) : Json()}};
}

std::string as_text(std::span<const State> states, int code, const char *what)
{
    const auto state = std::ranges::find(states, code, &State::code);
    if (state == states.end())
        return std::string(what) + ' ' + std::to_string(code);
    return std::string(state->phrase) + " (" + state->name + ")";
}

} // namespace

Json play_state_json(int code) { return as_json(play_states, code); }
Json record_state_json(int code) { return as_json(record_states, code); }
std::string play_state_text(int code) { return as_text(play_states, code, "state"); }
std::string record_state_text(int code) { return as_text(record_states, code, "state"); }
Json record_type_json(int code) { return as_json(record_types, code); }
std::string record_type_text(int code) { return as_text(record_types, code, "type"); }
Json standard_json(int code) { return as_json(standards, code); }
std::string standard_text(int code) { return as_text(standards, code, "standard"); }

Json answer_json(int answer) { return answer == 0 || answer == 1 ? Json(answer == 1) : Json(answer); }

std::string answer_text(int answer)
{
    if (answer == 0 || answer == 1)
        return answer == 1 ? "yes" : "no";
    return "unknown, the service answers " + std::to_string(answer);
}

} // namespace pvrctl
