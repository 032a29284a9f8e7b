// The machine that a reader runs on, as a target sets it: a disk that reads in pieces or fails, a clock on which
// sleeping takes no time, the platform's log and system information. The linker puts these in place (--wrap).
#pragma once

#include <cstddef>
#include <functional>
#include <utility>

namespace fuzz {

enum class Disk {
    whole,
    piecemeal,   ///< a read gives less than it was asked for
    interrupted, ///< every other read or attempt to lock is interrupted by a signal
    failing,     ///< from some byte on nothing can be read
};

struct Machine {
    Disk disk = Disk::whole;
    std::size_t piece = 1;    ///< bytes that a piecemeal disk gives at once
    std::size_t readable = 0; ///< bytes that a failing disk can read
    bool records = true;      ///< whether the product does

    // What somebody else does during the next call: while the reader sleeps for the third time, or as soon as it logs
    // a line with this in its text.
    void when_slept(std::function<void()> action) { at_sleep = std::move(action); }
    void when_logged(const char *text, std::function<void()> action)
    {
        awaited = text;
        at_line = std::move(action);
    }

    std::function<void()> at_sleep, at_line;
    const char *awaited = nullptr;
};

/// What the call finds that run_on_machine() makes.
extern Machine machine;

void run_on_machine(const std::function<void()> &call);

} // namespace fuzz
