// Stands in for the crash-report library: reports a system exception on standard error and returns the filter
// result.
#include <windows.h>

#include <cstdio>
#include <cstring>

// QUILL_CRASHGUARD selects the result: "search", "continue" or, by default, to execute the handler.
// "continue" makes the page of an access violation writable, so that the access can be retried.
extern "C" __declspec(dllexport) int HandleException(EXCEPTION_POINTERS* exception)
{
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    std::fprintf(stderr, "crashguard: exception %08lx\n", record.ExceptionCode);
    std::fflush(stderr);

    char verdict[16] = {};
    GetEnvironmentVariableA("QUILL_CRASHGUARD", verdict, sizeof verdict);
    if (std::strcmp(verdict, "search") == 0)
        return EXCEPTION_CONTINUE_SEARCH;
    if (std::strcmp(verdict, "continue") == 0 && record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION) {
        DWORD before = 0;
        VirtualProtect(reinterpret_cast<void*>(record.ExceptionInformation[1]), 1, PAGE_READWRITE, &before);
        return EXCEPTION_CONTINUE_EXECUTION;
    }
    return EXCEPTION_EXECUTE_HANDLER;
}
