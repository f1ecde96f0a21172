// Makes any access to a freed block of the module an access violation. A freed block usually remains
// readable, so that a test which reads it would pass.
#pragma once

#include <windows.h>

#include <cstddef>

namespace quill::test {

// In its scope, blocks of at least that many bytes that the module allocates get pages of their own, which
// become inaccessible when the module frees them. Create it before the module allocates such a block and
// destroy it after the last one is freed. One at a time.
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
