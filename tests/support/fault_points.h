// Counts the places at which a call fails once in some test, for the sum over all tests that do so.
#pragma once

#include <cstddef>
#include <cstdio>

namespace quill::test {

// Writes one line, "fault points: N of ROUTINE", for a finished loop over a routine's calls.
inline void report_fault_points(const char* routine, std::size_t points)
{
    std::printf("fault points: %zu of %s\n", points, routine);
    std::fflush(stdout);
}

} // namespace quill::test
