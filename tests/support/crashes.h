// System exceptions to order, for what stands behind a barrier.
#pragma once

namespace quill::test {

// Each happens in a function of its own: a handler around its caller sees it.
void read_nowhere();
void divide_by_zero();
void overflow_stack();
void raise_own_exception(); // 0xE0001234

// A page that nobody may touch until its protection is changed, and a look at it.
void forbid_page();
void read_page();

// Handling an overflow takes some stack itself. Call on the thread that will overflow, once.
void keep_stack_for_handling();

} // namespace quill::test
