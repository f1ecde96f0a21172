// The type library that the module carries as a resource.
#pragma once

#include "atl/atlcomcli.h"

#include <string>

namespace ATL {

// Loads resource TYPELIB 1 of the module (`index` null) or another one (index "\\2"). `path` receives what
// the library is to be registered under, and may be null.
ATLAPI AtlLoadTypeLib(HINSTANCE instance, LPCOLESTR index, BSTR* path, ITypeLib** library) noexcept;
// Per machine or per user, as AtlSetPerUserRegistration says.
ATLAPI AtlRegisterTypeLib(HINSTANCE instance, LPCOLESTR index) noexcept;
ATLAPI AtlUnRegisterTypeLib(HINSTANCE instance, LPCOLESTR index) noexcept;

// The full path of a module, whatever its length. Throws CAtlException when it cannot be had.
std::wstring AtlGetModulePath(HINSTANCE instance);

} // namespace ATL
