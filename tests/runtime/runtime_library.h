// Functions of runtime_library.dll, which is linked without the toolchain's thread library, like the module.
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
    // Throws, rethrows, uses a locale and a clock, under a mutex. Returns whether all of it worked.
    bool (*use_runtime)();

    // Increments a number that the mutex protects and returns it.
    int (*count)(mutex_kind kind);

    // Calls a one-time routine three times, which throws in its first run. Returns the number of runs.
    int (*runs_until_done)();
    // Calls a one-time routine and returns the number of runs. For many threads: none returns before the end
    // of the run.
    int (*run_once)();

    wchar_t (*upper_case_by_locale)(wchar_t character);

    long long (*nanoseconds_since_1970)();
    long long (*nanoseconds_of_steady_clock)();
    // The error code of clock_gettime for this clock; 0 for success.
    int (*error_of_clock)(int clock);
};

using runtime_calls_function = const runtime_calls*();

inline constexpr const wchar_t* runtime_library_name = L"runtime_library.dll";

} // namespace quill::test
