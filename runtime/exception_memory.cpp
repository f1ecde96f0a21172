// Where exceptions live, without the C++ runtime's own reserve for the time when memory has run out: that one
// lies behind a lock that needs memory itself when it is first taken, and fails by throwing. The first
// exception of a module without memory would be thrown again and again until the stack is used up. The
// reserve here needs no lock. The linker takes these definitions because the runtime's own come later.
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
static_assert(header_room % alignof(std::max_align_t) == 0); // the object behind it is aligned too

constexpr std::size_t slot_size = 1024;
constexpr std::size_t slot_count = 64; // each thread has an exception or two in flight

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

// The header, zeroed as the runtime expects it, with the room for the object behind it.
std::byte* allocate(std::size_t object_size) noexcept
{
    if (object_size > std::numeric_limits<std::size_t>::max() - header_room)
        std::terminate(); // no such object exists
    const std::size_t size = header_room + object_size;
    void* memory = std::malloc(size);
    if (!memory)
        memory = take_slot(size);
    if (!memory)
        std::terminate(); // nothing can be thrown, nor be reported
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
