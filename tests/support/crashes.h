// Raises system exceptions, for the tests of barriers.
#pragma once

namespace quill::test {

// Each is raised in a function of its own, so that a handler around its caller sees it.
void read_nowhere();
void divide_by_zero();
void overflow_stack();
void raise_own_exception(); // 0xE0001234

// A page without access until its protection is changed, and a read of it.
void forbid_page();
void read_page();

// Reserves the stack that handling an overflow needs. Call once on the thread that will overflow.
void keep_stack_for_handling();

} // namespace quill::test
