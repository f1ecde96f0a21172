// Counts what the program takes from the heap through operator new.
#pragma once

#include <cstddef>

namespace quill::bench {

// How often since the program's start. Link allocations.cpp, which replaces the operator.
std::size_t allocations();

} // namespace quill::bench
