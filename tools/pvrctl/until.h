// The states that can be waited for, for the shells.
#pragma once

#include <vector>

#include "completion.h"

namespace pvrctl {

std::vector<Candidate> awaited_states_offered();

} // namespace pvrctl
