// A conditional-access library of the test's own, and the platform's word on broadcasts and CI slots.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace support {

constexpr int untouched = -77;

struct Module {
    bool is_fitted = true;
    bool is_throwing = false;
    bool is_answering = true;
    bool is_writing = true; ///< the outputs, whatever it answers
    int value = 0;
    int play_count = 200;
    std::vector<std::pair<int, int>> sections;

    // what it was asked
    int slot = -1; ///< in the closed library's table of functions
    std::string path;
    int position = untouched;
};

extern Module module;

/// A module that answers, on a product that receives DVB/ISDB and has a CI slot.
void reset_module();

/// Nothing for what the platform cannot tell.
void set_standard(std::optional<int> standard);
void set_ci_slots(std::optional<int> slots);

} // namespace support
