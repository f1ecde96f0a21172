// Which calls of a routine a fault-injection loop makes fail, and how many they were.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdio>

namespace quill::test {

// A loop over the calls of a routine runs once for each way of failing. The short form takes every sixth call
// and starts at another call for each way, so that together they cover all calls; with QUILL_EVERY_FAULT set
// each way takes every call.
struct fault_calls
{
    int first;
    int step;
};

inline bool every_fault_is_wanted()
{
    return GetEnvironmentVariableW(L"QUILL_EVERY_FAULT", nullptr, 0) != 0;
}

inline fault_calls calls_that_fail(int way)
{
    constexpr int usual_step = 6;
    if (every_fault_is_wanted())
        return {1, 1};
    return {1 + way % usual_step, usual_step};
}

// Prints "fault points: N of ROUTINE" for a finished loop over the calls of a routine.
inline void report_fault_points(const char* routine, std::size_t points)
{
    std::printf("fault points: %zu of %s\n", points, routine);
    std::fflush(stdout);
}

} // namespace quill::test
