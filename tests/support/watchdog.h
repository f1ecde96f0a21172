// Ends a test program that hangs: prints the stacks of its threads and exits with watchdog_exit_code.
#pragma once

#include <windows.h>

namespace quill::test {

inline constexpr UINT watchdog_exit_code = 99;

// Limits each test case to QUILL_TEST_LIMIT_MS milliseconds; 150 s if the variable is not set, since machines
// under load are slow. Call once, before RUN_ALL_TESTS.
void start_watchdog();

// Prints the stack of every thread of this process except the calling one to standard error.
void print_stacks_of_other_threads();

} // namespace quill::test
