// Reads registry keys with everything below them, and restores them.
#pragma once

#include "acceptance/saved_registry.h"

namespace quill::acceptance {

// Reads the tree that the argument names. Throws std::runtime_error if a key cannot be read.
saved_tree read_tree(const saved_tree& named);

// Writes what differs from the saved tree, and no more: keys that are as before keep their permissions.
// Throws std::runtime_error if a key cannot be written.
void restore_tree(const saved_tree& saved);

} // namespace quill::acceptance
