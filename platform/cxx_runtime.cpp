// Two parts of the C++ runtime's own interface, without its thread library. The runtime keeps the state of
// exceptions, and guards the initialisation of static objects, by means of that library, which opens two
// handles for each thread that comes by and some more for itself, and closes none of them when the DLL is
// unloaded. A browser loads and unloads this module as it likes; nothing may be left in it. The linker
// takes these definitions because the runtime's own come later.
#include <windows.h>

#include <cxxabi.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace __cxxabiv1 {

// Laid out by the C++ ABI.
struct __cxa_eh_globals
{
    void* caught_exceptions;
    unsigned int uncaught_exceptions;
};

namespace {

constinit thread_local __cxa_eh_globals exception_state{};

// A static object's guard: the ABI tests its first byte, the rest is the implementation's.
struct guard_state
{
    std::uint8_t initialised;
    std::uint8_t in_progress;
    std::uint16_t unused;
    std::uint32_t owner; // id of the thread that initialises the object
};
static_assert(sizeof(guard_state) == sizeof(__guard));

// One lock serves all guards: initialisation happens once and takes no time that matters. It is not held
// while an object's initialiser runs.
SRWLOCK guards_lock = SRWLOCK_INIT;
CONDITION_VARIABLE guard_changed = CONDITION_VARIABLE_INIT;

guard_state state_of(const __guard* guard)
{
    guard_state state;
    std::memcpy(&state, guard, sizeof state);
    return state;
}

void change(__guard* guard, const guard_state& state)
{
    AcquireSRWLockExclusive(&guards_lock);
    std::memcpy(guard, &state, sizeof state);
    ReleaseSRWLockExclusive(&guards_lock);
    WakeAllConditionVariable(&guard_changed);
}

} // namespace

extern "C" {

__cxa_eh_globals* __cxa_get_globals() noexcept
{
    return &exception_state;
}

__cxa_eh_globals* __cxa_get_globals_fast() noexcept
{
    return &exception_state;
}

// 1: the caller is to initialise the object; 0: it is initialised.
int __cxa_guard_acquire(__guard* guard)
{
    if (__atomic_load_n(reinterpret_cast<const std::uint8_t*>(guard), __ATOMIC_ACQUIRE))
        return 0;
    const DWORD self = GetCurrentThreadId();
    AcquireSRWLockExclusive(&guards_lock);
    guard_state state = state_of(guard);
    while (state.in_progress) {
        if (state.owner == self)
            std::abort(); // an initialiser that needs its own object
        SleepConditionVariableSRW(&guard_changed, &guards_lock, INFINITE, 0);
        state = state_of(guard);
    }
    const bool ours = !state.initialised;
    if (ours) {
        state.in_progress = 1;
        state.owner = self;
        std::memcpy(guard, &state, sizeof state);
    }
    ReleaseSRWLockExclusive(&guards_lock);
    return ours;
}

void __cxa_guard_release(__guard* guard) noexcept
{
    change(guard, {1, 0, 0, 0});
}

// The initialiser threw: the next caller tries again.
void __cxa_guard_abort(__guard* guard) noexcept
{
    change(guard, {0, 0, 0, 0});
}

} // extern "C"

} // namespace __cxxabiv1
