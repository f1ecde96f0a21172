// Makes every use of a freed block of the module's end the test program: a freed block is usually still
// readable, and a test that reads it passes.
#pragma once

#include <windows.h>

#include <cstddef>

namespace quill::test {

// While this lives, blocks of at least that many bytes that the module allocates get pages of their own, and
// lose the right to be accessed when the module frees them. Built before the module allocates such a block,
// and destroyed when it has none any more. One at a time.
class freed_memory_trap
{
public:
    freed_memory_trap(HMODULE module, std::size_t smallest);
    freed_memory_trap(const freed_memory_trap&) = delete;
    freed_memory_trap& operator=(const freed_memory_trap&) = delete;
    ~freed_memory_trap();

private:
    HMODULE module_;
};

} // namespace quill::test
