// The rows of a registration script. Plain code, used by product_facts.cpp.
#pragma once

#include "diagnose/product.h"

#include <string_view>

namespace quill::diagnose {

// The values that the script writes below HKEY_LOCAL_MACHINE in a registration for the machine, and keys
// without values. Empty if the script is not one.
std::vector<registered_value> registered_values(std::wstring_view script);

} // namespace quill::diagnose
