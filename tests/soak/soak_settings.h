// The length and the seed of a run. Without settings a program makes the short run of the test suite.
#pragma once

#include <windows.h>

#include <cstdint>

namespace quill::soak {

// The number in an environment variable; otherwise if it is missing or not a number.
std::uint64_t number_setting(const wchar_t* name, std::uint64_t otherwise);

// QUILL_SOAK_SEED, or a fixed number. Printed, so that a run can be repeated.
std::uint64_t announced_seed(const char* run);

// Prints a step of a run if QUILL_SOAK_TRACE is set.
void trace_step(std::uint64_t number, const char* what);

} // namespace quill::soak
