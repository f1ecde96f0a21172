// What runtime_library.dll does on behalf of its tests. It is linked as the module is: without the
// toolchain's thread library.
#pragma once

#include <windows.h>

namespace quill::test {

enum class mutex_kind
{
    by_call,    // std::mutex
    by_constant // pthread_mutex_t, which its first use initialises
};

struct runtime_calls
{
    // Throws, throws again, asks a locale and a clock, under a mutex. Whether all of it worked.
    bool (*use_runtime)();

    // Adds one to a number that the mutex protects. What it is then.
    int (*count)(mutex_kind kind);

    // The number of runs of a routine that throws in its first and is asked for three times.
    int (*runs_until_done)();
    // Runs a routine once; how many runs there were. To be called on many threads: none returns before the
    // end of the run.
    int (*run_once)();

    wchar_t (*upper_case_by_locale)(wchar_t character);

    long long (*nanoseconds_since_1970)();
    long long (*nanoseconds_of_steady_clock)();
    // The error of asking for this clock; 0 for none.
    int (*error_of_clock)(int clock);
};

using runtime_calls_function = const runtime_calls*();

inline constexpr const wchar_t* runtime_library_name = L"runtime_library.dll";

} // namespace quill::test
