// Guards of function-local statics, implemented with the system's locks.
#include "runtime/once.h"

#include <cxxabi.h>

#include <cstdint>
#include <cstdlib>

namespace __cxxabiv1 {

namespace {

// Compiled code tests the first byte, as the ABI defines; the rest is private to the implementation.
struct guard_state
{
    std::uint8_t is_initialised;
    std::uint8_t unused[3];
    quill::runtime::once_word once;
};
static_assert(sizeof(guard_state) == sizeof(__guard) && alignof(guard_state) <= alignof(__guard));

guard_state& state_of(__guard* guard)
{
    return *reinterpret_cast<guard_state*>(guard);
}

} // namespace

extern "C" {

// 1: the caller must initialise the object; 0: it is already initialised.
int __cxa_guard_acquire(__guard* guard)
{
    guard_state& state = state_of(guard);
    if (__atomic_load_n(&state.is_initialised, __ATOMIC_ACQUIRE))
        return 0;
    switch (quill::runtime::begin_once(state.once)) {
    case quill::runtime::once_result::done:
        return 0;
    case quill::runtime::once_result::begin:
        return 1;
    case quill::runtime::once_result::recursive:
        break;
    }
    // The initialiser uses its own object. Compilers assume that this function does not throw.
    std::abort();
}

void __cxa_guard_release(__guard* guard) noexcept
{
    guard_state& state = state_of(guard);
    __atomic_store_n(&state.is_initialised, std::uint8_t{1}, __ATOMIC_RELEASE);
    quill::runtime::end_once(state.once, true);
}

// The initialiser threw: the next caller initialises again.
void __cxa_guard_abort(__guard* guard) noexcept
{
    quill::runtime::end_once(state_of(guard).once, false);
}

} // extern "C"

} // namespace __cxxabiv1
