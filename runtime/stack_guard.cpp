// Runtime support for -fstack-protector, without the toolchain's library: that one takes its random number
// from the system's cryptography and so loads libraries under the loader lock, which is not permitted. The
// linker prefers these definitions because the toolchain's library comes later.
#include <windows.h>

#include <cstdint>

namespace {

// Mixes the bits of `value`.
std::uint64_t spread(std::uint64_t value) noexcept
{
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
    return value ^ (value >> 31);
}

[[noreturn]] void end_process() noexcept
{
    // Bypasses all exception handlers, which would run on the corrupted stack.
    __fastfail(FAST_FAIL_STACK_COOKIE_CHECK_FAILURE);
    __builtin_unreachable();
}

} // namespace

extern "C" {

// The canary that a function places between its buffers and its return address.
std::uintptr_t __stack_chk_guard = 0x2B992DDFA23249D6;

// Called when a function finds its canary changed.
[[noreturn]] void __stack_chk_fail() noexcept
{
    end_process();
}

// Called when a fortified copy would overflow its destination.
void __chk_fail()
{
    end_process();
}

} // extern "C"

namespace {

// Runs before all other constructors. The entropy is the address layout and the exact load time. The lowest
// byte is 0, so that an overflowing string copy cannot reproduce the canary.
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
