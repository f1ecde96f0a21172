// Which registry keys a run saves before it changes anything, and compares and restores at its end.
#pragma once

#include "acceptance/saved_registry.h"

#include <string>
#include <string_view>
#include <vector>

namespace quill::acceptance {

// The keys that are the product's own, from a listing of what its registration writes: of each branch the
// uppermost key that has values, is named by a GUID, or has no key below it. "HKLM\SOFTWARE\..." each.
std::vector<std::string> own_keys(std::string_view listing);

// The trees of these keys, without their contents: in both views of HKLM, in the one of HKCU.
std::vector<saved_tree> trees_of(const std::vector<std::string>& keys);

} // namespace quill::acceptance
