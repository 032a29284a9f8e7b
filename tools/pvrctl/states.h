// Names beside the numbers of the service's states, kinds and answers, and of broadcast standards.
#pragma once

#include <string>

#include "output.h"

namespace pvrctl {

/// {"code": 1, "name": "PLAY_STATE_PLAY"}; the name is null for a number without one.
Json play_state_json(int code);
Json record_state_json(int code);
Json record_type_json(int code);
Json standard_json(int code);

/// "playing (PLAY_STATE_PLAY)"; "state 99", "type 99" or "standard 99" for a number without a name.
std::string play_state_text(int code);
std::string record_state_text(int code);
std::string record_type_text(int code);
std::string standard_text(int code);

/// A question's answer that is 1 for yes and 0 for no: true or false, or else the number that came.
Json answer_json(int answer);
std::string answer_text(int answer);

} // namespace pvrctl
