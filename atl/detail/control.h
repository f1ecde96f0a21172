// CComControl: the part of a control that depends on its class and its window class.
#pragma once

#include "atl/detail/control_base.h"

namespace ATL {

template <class T, class WinBase = CWindowImpl<T>>
class ATL_NO_VTABLE CComControl : public CComControlBase, public WinBase
{
public:
    CComControl() noexcept : CComControlBase(this->m_hWnd) {}

    HRESULT ControlQueryInterface(const IID& iid, void** ppv) override
    {
        return static_cast<T*>(this)->_InternalQueryInterface(iid, ppv);
    }
    HWND CreateControlWindow(HWND hWndParent, RECT& rcPos) override
    {
        return static_cast<T*>(this)->Create(hWndParent, rcPos);
    }

    using thisClass = CComControl<T, WinBase>;
    BEGIN_MSG_MAP(thisClass)
    MESSAGE_HANDLER(WM_PAINT, CComControlBase::OnPaint)
    MESSAGE_HANDLER(WM_PRINTCLIENT, CComControlBase::OnPaint)
    MESSAGE_HANDLER(WM_SETFOCUS, CComControlBase::OnSetFocus)
    MESSAGE_HANDLER(WM_KILLFOCUS, CComControlBase::OnKillFocus)
    MESSAGE_HANDLER(WM_MOUSEACTIVATE, CComControlBase::OnMouseActivate)
    END_MSG_MAP()

protected:
    IUnknown* message_owner() noexcept override { return static_cast<T*>(this)->GetUnknown(); }
};

} // namespace ATL
