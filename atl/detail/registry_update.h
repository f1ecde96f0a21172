// Applies a parsed registry script.
#pragma once

#include "atl/detail/registry_script.h"

namespace ATL::detail {

// Both return a Win32 error code. Registration stops at the first error; unregistration continues and returns
// the first error. A key or value that does not exist counts as removed.
LSTATUS register_section(const script_section& section);
LSTATUS unregister_section(const script_section& section);

} // namespace ATL::detail
