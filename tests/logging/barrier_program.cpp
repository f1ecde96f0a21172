// Raises the exceptions that its arguments name inside the barriers and prints the results. A separate
// process, because the suite's libraries are loaded once. "reenter" and "join" select a call while these are
// being loaded, on the same thread and on another one. "release-deep" and "release-overflow" select what a
// release() does: call a function that needs much stack, and release a host object whose Release overflows
// the stack.
#include "logging/exception_barriers.h"
#include "logging/pdfcore_exception.h"
#include "platform/unique_handle.h"
#include "tests/support/crashes.h"

#include <windows.h>

#include <cstdio>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

constexpr const char* entry_name = "quill::browser_events_sink::on_before_navigate";
constexpr std::uint32_t entry_line = 70;

volatile char last_byte;

// Writes beyond its buffer, up to the caller's return address.
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
    {"host-read-null",
     [] {
         quill::barrier::call_host([] {
             quill::test::read_nowhere();
             return S_OK;
         });
     }},
    {"read-page", quill::test::read_page},
    {"divide", quill::test::divide_by_zero},
    {"overflow", quill::test::overflow_stack},
    {"fill", [] { overrun_buffer(16); }},
    {"overrun", [] { overrun_buffer(48); }},
    // An exception of another compiler's runtime.
    {"foreign", [] { RaiseException(0xE06D7363, EXCEPTION_NONCONTINUABLE, 0, nullptr); }},
    {"throw", [] { throw std::runtime_error("thrown"); }},
    {"pdfcore", [] { throw pdfcore_exception(); }},
};

// More stack than remains after an overflow.
__declspec(noinline) void use_stack()
{
    constexpr std::size_t size = 256 * 1024;
    volatile char space[size];
    for (std::size_t i = 0; i < size; i += 1024)
        space[size - 1 - i] = 'x';
    last_byte = space[0];
}

struct overflowing_object : IUnknown
{
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        quill::test::overflow_stack();
        return 1;
    }
} host_object;

std::function<void()> while_released;

struct counted_releases
{
    int count = 0;
    void release() noexcept
    {
        if (while_released)
            while_released();
        ++count;
    }
} held;

LONG happened = 0;

HRESULT happen(const std::string& event)
{
    InterlockedIncrement(&happened);
    return quill::CrashBorder(
        held,
        [&] {
            events.at(event)();
            return S_OK;
        },
        E_FAIL, entry_name, entry_line);
}

std::function<void()> while_a_library_loads;

void fail_inside()
{
    std::printf("inside: %08lx\n", static_cast<unsigned long>(happen("read-null")));
}

// Throws inside a barrier while another thread is loading a library.
class joining_thread
{
public:
    joining_thread()
    {
        while_a_library_loads = [this] {
            SetEvent(loads_.get());
            WaitForSingleObject(arrived_.get(), deadline_ms);
        };
        thread_.reset(CreateThread(nullptr, 0, run, this, 0, nullptr));
        WaitForSingleObject(arrived_.get(),
                            deadline_ms); // a thread cannot start while a library is being loaded
    }
    ~joining_thread()
    {
        WaitForSingleObject(thread_.get(), deadline_ms);
        std::printf("joined: %08lx\n", static_cast<unsigned long>(result_));
    }
    joining_thread(const joining_thread&) = delete;
    joining_thread& operator=(const joining_thread&) = delete;

private:
    static constexpr DWORD deadline_ms = 10'000;

    static DWORD WINAPI run(void* argument)
    {
        auto& self = *static_cast<joining_thread*>(argument);
        SignalObjectAndWait(self.arrived_.get(), self.loads_.get(), deadline_ms, FALSE);
        SetEvent(self.arrived_.get());
        self.result_ = happen("read-null");
        return 0;
    }

    quill::unique_handle loads_{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    quill::unique_handle arrived_{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    quill::unique_handle thread_;
    HRESULT result_ = E_PENDING;
};

void print_result(void* event)
{
    const std::string& name = *static_cast<const std::string*>(event);
    const HRESULT result = happen(name);
    std::printf("%s: %08lx\n", name.c_str(), static_cast<unsigned long>(result));
}

// A handler in the browser around the entry.
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

extern "C" __declspec(dllexport) void library_loads()
{
    if (const auto action = std::exchange(while_a_library_loads, nullptr))
        action();
}

int main(int argc, char** argv)
{
    std::optional<joining_thread> other;
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    quill::test::keep_stack_for_handling();
    for (int i = 1; i < argc; ++i) {
        std::string event = argv[i];
        if (event == "reenter") {
            while_a_library_loads = fail_inside;
            continue;
        }
        if (event == "release-deep") {
            while_released = use_stack;
            continue;
        }
        if (event == "release-overflow") {
            while_released = [] { quill::barrier::release_host(&host_object); };
            continue;
        }
        if (event == "join") {
            other.emplace();
            continue;
        }
        if (!events.contains(event))
            return 2;
        call_as_the_browser(print_result, &event);
        std::fflush(stdout);
    }
    // release() was called once for each entry.
    return held.count == happened ? 0 : 3;
}
