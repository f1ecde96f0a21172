#include "tests/support/watchdog.h"

#include <windows.h>

#include <dbghelp.h>
#include <gtest/gtest.h>
#include <tlhelp32.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace quill::test {
namespace {

constexpr DWORD default_limit_ms = 150'000;
constexpr std::size_t maximum_frames = 64;

struct watch
{
    DWORD limit_ms = default_limit_ms;
    HANDLE restart = nullptr; // set at the start and the end of each test case
    std::atomic<const testing::TestInfo*> running = nullptr;
};

watch& the_watch()
{
    static watch instance;
    return instance;
}

class watch_listener : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo& test) override { note(&test); }
    void OnTestEnd(const testing::TestInfo&) override { note(nullptr); }

    static void note(const testing::TestInfo* test)
    {
        the_watch().running = test;
        SetEvent(the_watch().restart);
    }
};

DWORD WINAPI watch_tests(void*)
{
    watch& state = the_watch();
    for (;;) {
        const DWORD limit_ms = state.running ? state.limit_ms : INFINITE;
        if (WaitForSingleObject(state.restart, limit_ms) == WAIT_OBJECT_0)
            continue;
        const testing::TestInfo* test = state.running;
        if (!test)
            continue;
        std::fprintf(stderr, "\nWATCHDOG: %s.%s runs for more than %lu ms\n", test->test_suite_name(),
                     test->name(), state.limit_ms);
        std::fflush(stderr);
        print_stacks_of_other_threads();
        std::fflush(stdout);
        TerminateProcess(GetCurrentProcess(), watchdog_exit_code);
    }
}

// Uses the unwind tables only: the thread is suspended and may hold any lock, that of the heap included.
std::vector<DWORD64> stack_of(HANDLE thread)
{
    std::vector<DWORD64> frames;
    frames.reserve(maximum_frames);
    if (SuspendThread(thread) == static_cast<DWORD>(-1))
        return frames;
    CONTEXT context{};
    context.ContextFlags = CONTEXT_FULL;
    BOOL readable = GetThreadContext(thread, &context);
    while (readable && context.Rip != 0 && frames.size() < maximum_frames) {
        frames.push_back(context.Rip);
        DWORD64 base = 0;
        const auto entry = RtlLookupFunctionEntry(context.Rip, &base, nullptr);
        if (!entry) {
            MEMORY_BASIC_INFORMATION memory{};
            readable = VirtualQuery(reinterpret_cast<void*>(context.Rsp), &memory, sizeof memory) != 0 &&
                       memory.State == MEM_COMMIT;
            if (readable)
                context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
            context.Rsp += sizeof(DWORD64);
            continue;
        }
        void* handler_data = nullptr;
        DWORD64 establisher = 0;
        RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, entry, &context, &handler_data, &establisher,
                         nullptr);
    }
    ResumeThread(thread);
    return frames;
}

void print_frame(DWORD64 address)
{
    const HANDLE process = GetCurrentProcess();
    alignas(SYMBOL_INFO) char storage[sizeof(SYMBOL_INFO) + 512] = {};
    auto* symbol = reinterpret_cast<SYMBOL_INFO*>(storage);
    symbol->SizeOfStruct = sizeof(SYMBOL_INFO);
    symbol->MaxNameLen = 512;
    DWORD64 offset = 0;
    IMAGEHLP_MODULE64 module{};
    module.SizeOfStruct = sizeof module;
    const bool in_module = SymGetModuleInfo64(process, address, &module);
    std::fprintf(stderr, "    %016llx %s", address, in_module ? module.ModuleName : "?");
    if (SymFromAddr(process, address, &offset, symbol))
        std::fprintf(stderr, "!%s+0x%llx", symbol->Name, offset);
    IMAGEHLP_LINE64 line{};
    line.SizeOfStruct = sizeof line;
    DWORD column = 0;
    if (SymGetLineFromAddr64(process, address, &column, &line))
        std::fprintf(stderr, " (%s:%lu)", line.FileName, line.LineNumber);
    std::fputc('\n', stderr);
}

std::string folder_of_program()
{
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    const std::string text = path;
    return text.substr(0, text.find_last_of('\\'));
}

DWORD limit_from_environment()
{
    char text[32] = {};
    GetEnvironmentVariableA("QUILL_TEST_LIMIT_MS", text, sizeof text);
    const unsigned long limit_ms = std::strtoul(text, nullptr, 10);
    return limit_ms > 0 ? limit_ms : default_limit_ms;
}

} // namespace

void print_stacks_of_other_threads()
{
    SymSetOptions(SYMOPT_LOAD_LINES | SYMOPT_UNDNAME);
    SymInitialize(GetCurrentProcess(), folder_of_program().c_str(), TRUE);
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    bool any = false;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID != GetCurrentProcessId() || entry.th32ThreadID == GetCurrentThreadId())
            continue;
        const HANDLE thread = OpenThread(
            THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT | THREAD_QUERY_INFORMATION, FALSE, entry.th32ThreadID);
        if (!thread)
            continue;
        any = true;
        std::fprintf(stderr, "  thread %lu\n", entry.th32ThreadID);
        for (const DWORD64 address : stack_of(thread))
            print_frame(address);
        CloseHandle(thread);
    }
    CloseHandle(snapshot);
    if (!any)
        std::fprintf(stderr, "  no other thread is left: the system ends a thread whose stack overflows\n");
    SymCleanup(GetCurrentProcess());
    std::fflush(stderr);
}

void start_watchdog()
{
    watch& state = the_watch();
    state.limit_ms = limit_from_environment();
    state.restart = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    testing::UnitTest::GetInstance()->listeners().Append(new watch_listener);
    CloseHandle(CreateThread(nullptr, 0, watch_tests, nullptr, 0, nullptr));
}

} // namespace quill::test
