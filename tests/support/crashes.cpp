#include "tests/support/crashes.h"

#include <windows.h>

namespace quill::test {
namespace {

constexpr std::size_t page_size = 4096;

volatile int sink_of_values;

[[gnu::noinline]] __attribute__((no_sanitize("undefined"))) void read_through(const volatile int* address)
{
    sink_of_values = *address;
}

[[gnu::noinline]] __attribute__((no_sanitize("undefined"))) void divide(int number,
                                                                        const volatile int* divisor)
{
    sink_of_values = number / *divisor;
}

// More levels than any stack holds.
[[gnu::noinline]] int fill_stack(int depth)
{
    volatile char page[page_size];
    page[0] = static_cast<char>(depth);
    return depth > 1'000'000 ? 0 : fill_stack(depth + 1) + page[0];
}

void* forbidden_page()
{
    static void* const page = VirtualAlloc(nullptr, page_size, MEM_COMMIT | MEM_RESERVE, PAGE_NOACCESS);
    return page;
}

} // namespace

void read_nowhere()
{
    read_through(nullptr);
}

void divide_by_zero()
{
    const volatile int zero = 0;
    divide(7, &zero);
}

void overflow_stack()
{
    sink_of_values = fill_stack(0);
}

void raise_own_exception()
{
    RaiseException(0xE0001234, 0, 0, nullptr);
}

void forbid_page()
{
    DWORD before = 0;
    VirtualProtect(forbidden_page(), page_size, PAGE_NOACCESS, &before);
}

void read_page()
{
    read_through(static_cast<const int*>(forbidden_page()));
}

// Some systems commit the whole stack at the start and leave the guard page at its end; it is moved to where
// the reserve begins.
void keep_stack_for_handling()
{
    constexpr ULONG size = 64 * 1024;
    ULONG kept = size;
    SetThreadStackGuarantee(&kept);
    ULONG_PTR low = 0;
    ULONG_PTR high = 0;
    GetCurrentThreadStackLimits(&low, &high);
    DWORD before = 0;
    VirtualProtect(reinterpret_cast<void*>(low + size), 1, PAGE_READWRITE | PAGE_GUARD, &before);
}

} // namespace quill::test
