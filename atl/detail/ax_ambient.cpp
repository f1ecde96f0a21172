#include "atl/detail/ax_ambient.h"

#include <ocidl.h>
#include <olectl.h>

namespace ATL {
namespace {

void set_bool(VARIANT& value, bool on) noexcept
{
    value.vt = VT_BOOL;
    value.boolVal = on ? VARIANT_TRUE : VARIANT_FALSE;
}

void set_long(VARIANT& value, LONG number) noexcept
{
    value.vt = VT_I4;
    value.lVal = number;
}

} // namespace

HRESULT ambient_property(DISPID dispid, VARIANT& value) noexcept
{
    VariantInit(&value);
    switch (dispid) {
    case DISPID_AMBIENT_USERMODE:
    case DISPID_AMBIENT_SUPPORTSMNEMONICS:
        set_bool(value, dispid == DISPID_AMBIENT_USERMODE);
        return S_OK;
    case DISPID_AMBIENT_UIDEAD:
    case DISPID_AMBIENT_SHOWGRABHANDLES:
    case DISPID_AMBIENT_SHOWHATCHING:
    case DISPID_AMBIENT_DISPLAYASDEFAULT:
    case DISPID_AMBIENT_MESSAGEREFLECT:
        set_bool(value, false);
        return S_OK;
    case DISPID_AMBIENT_LOCALEID:
        set_long(value, static_cast<LONG>(GetUserDefaultLCID()));
        return S_OK;
    case DISPID_AMBIENT_BACKCOLOR:
        set_long(value, static_cast<LONG>(GetSysColor(COLOR_WINDOW)));
        return S_OK;
    case DISPID_AMBIENT_FORECOLOR:
        set_long(value, static_cast<LONG>(GetSysColor(COLOR_WINDOWTEXT)));
        return S_OK;
    default:
        return DISP_E_MEMBERNOTFOUND;
    }
}

} // namespace ATL
