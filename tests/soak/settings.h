// How long a run is and how it is steered. Without settings a program makes the short run that the tests
// have.
#pragma once

#include <windows.h>

#include <cstdint>

namespace quill::soak {

// The number in an environment variable; otherwise when it is not set or is none.
std::uint64_t number_setting(const wchar_t* name, std::uint64_t otherwise);

// QUILL_SOAK_SEED, or a fixed number. Printed, so that a run can be made again.
std::uint64_t announced_seed(const char* run);

// Writes a step of a run down, when QUILL_SOAK_TRACE is set.
void trace_step(std::uint64_t number, const char* what);

} // namespace quill::soak
