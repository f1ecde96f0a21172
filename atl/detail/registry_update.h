// Carries out what a registry script says.
#pragma once

#include "atl/detail/registry_script.h"

namespace ATL::detail {

// Both return the registry's status, 0 for success. Registration ends at the first failure, unregistration
// goes on and returns the first failure; what is missing already counts as removed.
LSTATUS register_section(const script_section& section);
LSTATUS unregister_section(const script_section& section);

} // namespace ATL::detail
