// The guards of static objects within functions, over the system's own locks.
#include "runtime/once.h"

#include <cxxabi.h>

#include <cstdint>
#include <cstdlib>

namespace __cxxabiv1 {

namespace {

// The ABI tests the first byte of a guard, the rest is the implementation's.
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

// 1: the caller is to initialise the object; 0: it is initialised.
int __cxa_guard_acquire(__guard* guard)
{
    guard_state& state = state_of(guard);
    if (__atomic_load_n(&state.is_initialised, __ATOMIC_ACQUIRE))
        return 0;
    switch (quill::runtime::begin_once(state.once)) {
    case quill::runtime::once_answer::done:
        return 0;
    case quill::runtime::once_answer::begin:
        return 1;
    case quill::runtime::once_answer::recursive:
        break;
    }
    // An initialiser that needs its own object. Compilers rely on no exception coming from here.
    std::abort();
}

void __cxa_guard_release(__guard* guard) noexcept
{
    guard_state& state = state_of(guard);
    __atomic_store_n(&state.is_initialised, std::uint8_t{1}, __ATOMIC_RELEASE);
    quill::runtime::end_once(state.once, true);
}

// The initialiser threw: the next caller tries again.
void __cxa_guard_abort(__guard* guard) noexcept
{
    quill::runtime::end_once(state_of(guard).once, false);
}

} // extern "C"

} // namespace __cxxabiv1
