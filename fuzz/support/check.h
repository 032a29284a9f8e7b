// What a target claims. A claim that does not hold ends the process, which libFuzzer reports with the input.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

inline void check(bool holds, const char *claim) noexcept
{
    if (holds)
        return;
    std::fprintf(stderr, "\nThis does not hold: %s\n", claim);
    std::abort();
}

} // namespace fuzz
