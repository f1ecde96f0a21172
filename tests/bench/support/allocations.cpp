#include "tests/bench/support/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> count;

} // namespace

std::size_t quill::bench::allocations()
{
    return count.load();
}

void* operator new(std::size_t size)
{
    count.fetch_add(1, std::memory_order_relaxed);
    if (void* const memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
