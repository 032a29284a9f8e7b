// What holds of every set that a file has described, whatever it says.
#pragma once

#include "equipment.h"

namespace fuzz {

void check_equipment(const simulator::Equipment &equipment);

} // namespace fuzz
