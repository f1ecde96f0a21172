// The ambient properties that a hosting window provides to its control.
#pragma once

#include <windows.h>

#include <oaidl.h>

namespace ATL {

// Returns DISP_E_MEMBERNOTFOUND and VT_EMPTY for a property that the host does not define.
HRESULT ambient_property(DISPID dispid, VARIANT& value) noexcept;

} // namespace ATL
