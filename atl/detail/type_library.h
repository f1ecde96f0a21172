// The type library in the module's resources.
#pragma once

#include "atl/atlcomcli.h"

#include <string>

namespace ATL {

// Loads the resource TYPELIB 1 of the module (`index` null) or another one (`index` "\\2"). `path`, which may
// be null, receives the path for its registration.
ATLAPI AtlLoadTypeLib(HINSTANCE instance, LPCOLESTR index, BSTR* path, ITypeLib** library) noexcept;
// Per machine or per user, as set by AtlSetPerUserRegistration.
ATLAPI AtlRegisterTypeLib(HINSTANCE instance, LPCOLESTR index) noexcept;
ATLAPI AtlUnRegisterTypeLib(HINSTANCE instance, LPCOLESTR index) noexcept;

// The full path of a module, of any length. Throws CAtlException on failure.
std::wstring AtlGetModulePath(HINSTANCE instance);

} // namespace ATL
