#include "performance/heap.h"

#include <cstddef>
#include <utility>

namespace {

thread_local bool is_counted = false;
thread_local long blocks_taken = 0;

void note_block() noexcept
{
    if (is_counted)
        ++blocks_taken;
}

} // namespace

// Everything in the process allocates through these; the C library's own stand behind them.
extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);

__attribute__((visibility("default"))) void *malloc(std::size_t size) noexcept
{
    note_block();
    return __libc_malloc(size);
}

__attribute__((visibility("default"))) void *calloc(std::size_t count, std::size_t size) noexcept
{
    note_block();
    return __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void *realloc(void *block, std::size_t size) noexcept
{
    note_block();
    return __libc_realloc(block, size);
}
}

namespace performance {

HeapCount::HeapCount() noexcept
{
    blocks_taken = 0;
    is_counted = true;
}

HeapCount::~HeapCount() { is_counted = false; }

long HeapCount::blocks() const noexcept { return blocks_taken; }

Uncounted::Uncounted() noexcept : was_counted_(std::exchange(is_counted, false)) {}

Uncounted::~Uncounted() { is_counted = was_counted_; }

} // namespace performance
