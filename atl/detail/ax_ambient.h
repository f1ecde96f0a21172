// Ambient properties that a hosting window gives its control.
#pragma once

#include <windows.h>

#include <oaidl.h>

namespace ATL {

// DISP_E_MEMBERNOTFOUND, and an empty value, for properties that the host leaves to the control.
HRESULT AxAmbientProperty(DISPID dispid, VARIANT& value) noexcept;

} // namespace ATL
