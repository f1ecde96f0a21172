// Ends a test program that hangs: prints the stacks of its threads and exits with watchdog_exit_code.
#pragma once

#include <windows.h>

namespace quill::test {

inline constexpr UINT watchdog_exit_code = 99;

// Watches each test case for QUILL_TEST_LIMIT_MS milliseconds; 150 s when the variable is not set, since a
// loaded machine takes long. Call once, before RUN_ALL_TESTS.
void start_watchdog();

// Prints the stack of every thread of this process but the calling one to standard error.
void print_stacks_of_other_threads();

} // namespace quill::test
