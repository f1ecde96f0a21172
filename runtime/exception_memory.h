// How much room exception_memory.cpp leaves for what the C++ library keeps with an exception.
#pragma once

#include <cstddef>

namespace quill::runtime {

// In front of a thrown object, and in place of one that is thrown again. The library's own need, 160 bytes
// today, is known to its sources only; a test reads it from what the library writes.
inline constexpr std::size_t exception_header_room = 256;

} // namespace quill::runtime
