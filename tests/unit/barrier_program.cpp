// Lets the things named by its arguments happen behind the barriers, one after the other, and prints what
// became of each: in a process of its own, because the suite's libraries are looked up once.
#include "logging/exception_barriers.h"
#include "logging/pdfcore_exception.h"
#include "tests/support/crashes.h"

#include <windows.h>

#include <cstdio>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>

namespace {

constexpr const char* entry_name = "quill::browser_events_sink::on_before_navigate";
constexpr std::uint32_t entry_line = 70;

volatile char last_byte;

// Writes more than its buffer takes, up to where the caller's return address lies.
__declspec(noinline) __attribute__((no_sanitize("undefined"))) void overrun_buffer(std::size_t count)
{
    volatile char buffer[16] = {};
    volatile char* const end = buffer + count;
    for (volatile char* place = buffer; place != end; ++place)
        *place = 'x';
    last_byte = buffer[0];
}

const std::map<std::string, std::function<void()>> events = {
    {"nothing", [] {}},
    {"read-null", quill::test::read_nowhere},
    {"read-page", quill::test::read_page},
    {"divide", quill::test::divide_by_zero},
    {"overflow", quill::test::overflow_stack},
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

} // namespace

int main(int argc, char** argv)
{
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    quill::test::keep_stack_for_handling();
    for (int i = 1; i < argc; ++i) {
        std::string event = argv[i];
        if (!events.contains(event))
            return 2;
        call_as_the_browser(print_result, &event);
        std::fflush(stdout);
    }
    return 0;
}
