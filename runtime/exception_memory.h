// The size that exception_memory.cpp reserves for the C++ library's exception header.
#pragma once

#include <cstddef>

namespace quill::runtime {

// In front of a thrown object, and the size of a dependent exception. The actual size is private to the C++
// library; a test checks that it fits by observing what the library writes.
inline constexpr std::size_t exception_header_room = 256;

} // namespace quill::runtime
