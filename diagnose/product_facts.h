// The product's constants from the module's headers and registration scripts, its settings by the module's
// own functions, and facts about the system.
#pragma once

#include "diagnose/product.h"

namespace quill::diagnose {

// Throws std::runtime_error if this program's own resources are damaged.
product_constants read_constants();
product_settings read_settings();
system_facts read_system();

} // namespace quill::diagnose
