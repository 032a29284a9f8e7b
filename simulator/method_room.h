// What all rooms of methods share: the set that they answer for.
#pragma once

#include "television.h"

#include <string>

namespace simulator {

class MethodRoom {
public:
    void advance() { set_.advance(); }
    void answered(const std::string &line) { set_.answered(line); }

protected:
    explicit MethodRoom(Television &set) : set_(set) {}

    Television &set_;
};

} // namespace simulator
