#include "handles.h"

#include <limits>

namespace simulator {

int Handles::issue()
{
    do {
        last_ = last_ == std::numeric_limits<int>::max() ? 1 : last_ + 1;
    } while (!issued_.insert(last_).second);
    return last_;
}

} // namespace simulator
