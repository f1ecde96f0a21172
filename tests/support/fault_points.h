// The places at which a call fails once in some test: which of them a run takes, and how many they were.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdio>

namespace quill::test {

// A long loop over a routine's calls is run for many ways of failing. The usual run takes every sixth call
// for each way, beginning elsewhere for each, so that between them they are spread over all calls; with
// QUILL_EVERY_FAULT set every way takes every call.
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

// Writes one line, "fault points: N of ROUTINE", for a finished loop over a routine's calls.
inline void report_fault_points(const char* routine, std::size_t points)
{
    std::printf("fault points: %zu of %s\n", points, routine);
    std::fflush(stdout);
}

} // namespace quill::test
