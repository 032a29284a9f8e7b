// The handles that the service has issued. Recordings and playbacks share one counter.
#pragma once

#include <set>

namespace simulator {

class Handles {
public:
    /// A handle that nobody holds: the counter starts at 1 and starts again behind the largest number.
    int issue();
    bool is_issued(int handle) const { return issued_.contains(handle); }
    /// False when nobody held it.
    bool release(int handle) { return issued_.erase(handle) != 0; }

private:
    std::set<int> issued_;
    int last_ = 0;
};

} // namespace simulator
