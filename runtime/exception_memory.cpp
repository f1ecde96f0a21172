// Allocation of exception objects, with a lock-free emergency pool. The toolchain's pool is guarded by a
// mutex that allocates on first use and throws if that fails: the first exception under memory exhaustion
// would recurse until the stack overflows. The linker prefers these definitions because the runtime's come
// later.
#include "runtime/exception_memory.h"

#include <cxxabi.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <limits>

namespace __cxxabiv1 {

namespace {

constexpr std::size_t header_room = quill::runtime::exception_header_room;
static_assert(header_room % alignof(std::max_align_t) == 0); // keeps the object after the header aligned

constexpr std::size_t slot_size = 1024;
constexpr std::size_t slot_count = 64; // a thread rarely has more than two exceptions in flight

struct alignas(16) slot
{
    std::array<std::byte, slot_size> bytes;
};

std::array<slot, slot_count> slots;
std::array<std::atomic<bool>, slot_count> slot_is_taken;

void* take_slot(std::size_t size) noexcept
{
    if (size > slot_size)
        return nullptr;
    for (std::size_t index = 0; index < slot_count; ++index)
        if (!slot_is_taken[index].exchange(true, std::memory_order_acquire))
            return slots[index].bytes.data();
    return nullptr;
}

// Allocates the header, zeroed as the runtime requires, and the object after it.
std::byte* allocate(std::size_t object_size) noexcept
{
    if (object_size > std::numeric_limits<std::size_t>::max() - header_room)
        std::terminate(); // the size would overflow
    const std::size_t size = header_room + object_size;
    void* memory = std::malloc(size);
    if (!memory)
        memory = take_slot(size);
    if (!memory)
        std::terminate(); // no exception can be thrown
    std::memset(memory, 0, header_room);
    return static_cast<std::byte*>(memory);
}

void release(std::byte* memory) noexcept
{
    const auto* const is_slot = std::find_if(
        slots.begin(), slots.end(), [memory](const slot& each) { return each.bytes.data() == memory; });
    if (is_slot == slots.end())
        std::free(memory);
    else
        slot_is_taken[static_cast<std::size_t>(is_slot - slots.begin())].store(false,
                                                                               std::memory_order_release);
}

} // namespace

extern "C" {

void* __cxa_allocate_exception(std::size_t thrown_size) noexcept
{
    return allocate(thrown_size) + header_room;
}

void __cxa_free_exception(void* thrown) noexcept
{
    release(static_cast<std::byte*>(thrown) - header_room);
}

__cxa_dependent_exception* __cxa_allocate_dependent_exception() noexcept
{
    return reinterpret_cast<__cxa_dependent_exception*>(allocate(0));
}

void __cxa_free_dependent_exception(__cxa_dependent_exception* dependent) noexcept
{
    release(reinterpret_cast<std::byte*>(dependent));
}

} // extern "C"

} // namespace __cxxabiv1
