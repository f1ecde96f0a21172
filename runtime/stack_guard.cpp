// What the compiler's checks of the stack need of the runtime, without the runtime's own library: that one
// draws its random number from the system's cryptography, for which it loads three libraries while this
// module is being loaded, when no library may be loaded, and takes ten times as long as all else that loading
// needs. The linker takes these definitions because the runtime's own come later.
#include <windows.h>

#include <cstdint>

namespace {

// Spreads whatever varies in the bits of value over all of them.
std::uint64_t spread(std::uint64_t value) noexcept
{
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
    return value ^ (value >> 31);
}

[[noreturn]] void end_process() noexcept
{
    // No handler runs: it would run on the damaged stack.
    __fastfail(FAST_FAIL_STACK_COOKIE_CHECK_FAILURE);
    __builtin_unreachable();
}

} // namespace

extern "C" {

// What a function lays between its buffers and its return address, and finds changed when a buffer overran.
std::uintptr_t __stack_chk_guard = 0x2B992DDFA23249D6;

// A function found its guard changed.
[[noreturn]] void __stack_chk_fail() noexcept
{
    end_process();
}

// A checked copy was asked to write beyond its target.
void __chk_fail()
{
    end_process();
}

} // extern "C"

namespace {

// Before anything else of the module. What an attacker cannot know: where things lie, and when exactly they
// came there. A text that overruns its buffer ends at a zero byte: it cannot write the guard's first.
[[gnu::constructor(101)]] __attribute__((no_stack_protector)) void choose_guard() noexcept
{
    FILETIME time{};
    GetSystemTimeAsFileTime(&time);
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    std::uint64_t value = spread((std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime);
    value = spread(value ^ static_cast<std::uint64_t>(counter.QuadPart));
    value = spread(value ^ ((std::uint64_t{GetCurrentProcessId()} << 32) | GetCurrentThreadId()));
    value = spread(value ^ reinterpret_cast<std::uintptr_t>(&time));
    value = spread(value ^ reinterpret_cast<std::uintptr_t>(&__stack_chk_guard));
    __stack_chk_guard = value & ~std::uint64_t{0xFF};
}

} // namespace
