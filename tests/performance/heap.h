// Counts the blocks that are taken from the heap while something is measured.
#pragma once

namespace performance {

/// While one lives, this thread's blocks are counted.
class HeapCount {
public:
    HeapCount() noexcept;
    ~HeapCount();
    HeapCount(const HeapCount &) = delete;
    HeapCount &operator=(const HeapCount &) = delete;

    /// How many were taken since it was made. A block that is resized counts again.
    long blocks() const noexcept;
};

/// While one lives, blocks are not counted: a stub takes what the thing would not take that it stands for.
class Uncounted {
public:
    Uncounted() noexcept;
    ~Uncounted();
    Uncounted(const Uncounted &) = delete;
    Uncounted &operator=(const Uncounted &) = delete;

private:
    bool was_counted_;
};

} // namespace performance
