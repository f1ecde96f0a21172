// Lets the things named by its arguments happen behind the barriers, one after the other, and prints what
// became of each: in a process of its own, because the suite's libraries are looked up once.
#include "logging/exception_barriers.h"
#include "logging/pdfcore_exception.h"

#include <windows.h>

#include <cstdio>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>

namespace {

constexpr const char* entry_name = "quill::browser_events_sink::on_before_navigate";
constexpr std::uint32_t entry_line = 70;

volatile int result_of_event;

__declspec(noinline) __attribute__((no_sanitize("undefined"))) void read_through(const volatile int* address)
{
    result_of_event = *address;
}

__declspec(noinline) __attribute__((no_sanitize("undefined"))) void divide(int number,
                                                                           const volatile int* divisor)
{
    result_of_event = number / *divisor;
}

// Deeper than any stack is.
__declspec(noinline) int overflow_stack(int depth)
{
    volatile char page[4096];
    page[0] = static_cast<char>(depth);
    return depth > 1'000'000 ? 0 : overflow_stack(depth + 1) + page[0];
}

// Writes more than its buffer takes, up to where the caller's return address lies.
__declspec(noinline) __attribute__((no_sanitize("undefined"))) void overrun_buffer(std::size_t count)
{
    volatile char buffer[16] = {};
    volatile char* const end = buffer + count;
    for (volatile char* place = buffer; place != end; ++place)
        *place = 'x';
    result_of_event = buffer[0];
}

void* reserved_page()
{
    static void* const page = VirtualAlloc(nullptr, 4096, MEM_COMMIT | MEM_RESERVE, PAGE_NOACCESS);
    return page;
}

const std::map<std::string, std::function<void()>> events = {
    {"nothing", [] {}},
    {"read-null", [] { read_through(nullptr); }},
    {"read-page", [] { read_through(static_cast<const int*>(reserved_page())); }},
    {"divide",
     [] {
         const volatile int zero = 0;
         divide(7, &zero);
     }},
    {"overflow", [] { result_of_event = overflow_stack(0); }},
    {"fill", [] { overrun_buffer(16); }},
    {"overrun", [] { overrun_buffer(48); }},
    // What a module of another compiler throws.
    {"foreign", [] { RaiseException(0xE06D7363, EXCEPTION_NONCONTINUABLE, 0, nullptr); }},
    {"throw", [] { throw std::runtime_error("thrown"); }},
    {"pdfcore", [] { throw pdfcore_exception(); }},
};

HRESULT happen(const std::string& event)
{
    return quill::CrashBorder(
        [&] {
            events.at(event)();
            return S_OK;
        },
        E_FAIL, entry_name, entry_line);
}

void print_result(void* event)
{
    const std::string& name = *static_cast<const std::string*>(event);
    const HRESULT result = happen(name);
    std::printf("%s: %08lx\n", name.c_str(), static_cast<unsigned long>(result));
}

// The browser's own handler around the entry.
__declspec(noinline) void call_as_the_browser(void (*call)(void*), void* event)
{
    DWORD code = 0;
    __try {
        call(event);
    } __except (code = GetExceptionCode(), EXCEPTION_EXECUTE_HANDLER) {
        std::printf("passed the barrier: %08lx\n", code);
    }
}

// Handling an overflow takes some stack itself. A system that has the whole stack in use from the start
// leaves the guard page at its end, whatever is to be kept: it is put where it belongs.
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

} // namespace

int main(int argc, char** argv)
{
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    keep_stack_for_handling();
    for (int i = 1; i < argc; ++i) {
        std::string event = argv[i];
        if (!events.contains(event))
            return 2;
        call_as_the_browser(print_result, &event);
        std::fflush(stdout);
    }
    return 0;
}
