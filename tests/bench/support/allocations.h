// Counts the program's heap allocations through operator new.
#pragma once

#include <cstddef>

namespace quill::bench {

// The number since the start of the program. Link allocations.cpp, which replaces the operator.
std::size_t allocations();

} // namespace quill::bench
