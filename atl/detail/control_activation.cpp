// In-place activation. Every step calls the site, which may re-enter the control, so the control's state is
// checked again after each call.
#include "atl/detail/control_base.h"
#include "atl/detail/in_place_context.h"

namespace ATL {

HRESULT CComControlBase::InPlaceActivate(LONG iVerb, const RECT* prcPosRect)
{
    CComPtr<IUnknown> self;
    ControlQueryInterface(IID_IUnknown, reinterpret_cast<void**>(&self));
    const CComPtr<IOleClientSite> client_site = m_spClientSite;
    if (!client_site && !m_spInPlaceSite)
        return S_OK;
    const bool asked = !m_spInPlaceSite;
    if (asked) {
        CComPtr<IOleInPlaceSite> offered;
        const HRESULT hr = client_site.QueryInterface(&offered);
        if (FAILED(hr) || !offered)
            return FAILED(hr) ? hr : E_NOINTERFACE;
        m_spInPlaceSite = offered;
        m_bNegotiatedWnd = 1;
    }
    const CComPtr<IOleInPlaceSite> site = m_spInPlaceSite;

    const bool entered = !m_bInPlaceActive;
    HRESULT hr = entered ? enter_in_place(site) : S_OK;
    in_place_context where;
    where.position = where.clip = prcPosRect ? *prcPosRect : m_rcPos;
    if (SUCCEEDED(hr)) {
        hr = show_in_place(site, where);
        if (FAILED(hr) && entered)
            leave_in_place(site);
    }
    if (FAILED(hr)) {
        // A held in-place site means that the document has a view: release it after a failed activation.
        if (asked && !m_bInPlaceActive && m_spInPlaceSite == site.p) {
            m_bNegotiatedWnd = 0;
            m_spInPlaceSite.Release();
        }
        return hr;
    }
    if (DoesVerbUIActivate(iVerb) && !m_bUIActive) {
        hr = enter_ui(site, where);
        if (FAILED(hr))
            return hr;
    }
    if (const CComPtr<IOleClientSite> shown = m_spClientSite)
        shown->ShowObject();
    return S_OK;
}

HRESULT CComControlBase::enter_in_place(IOleInPlaceSite* pSite)
{
    HRESULT hr = pSite->CanInPlaceActivate();
    if (hr != S_OK)
        return FAILED(hr) ? hr : E_FAIL; // S_FALSE: not now
    if (m_spInPlaceSite != pSite)
        return OLE_E_NOT_INPLACEACTIVE; // the site has closed the control in this call
    m_bInPlaceActive = 1;
    hr = pSite->OnInPlaceActivate();
    if (FAILED(hr))
        m_bInPlaceActive = 0;
    return hr;
}

HRESULT CComControlBase::show_in_place(IOleInPlaceSite* pSite, in_place_context& where)
{
    HWND parent = nullptr;
    HRESULT hr = pSite->GetWindow(&parent);
    if (FAILED(hr) || !parent)
        return FAILED(hr) ? hr : E_FAIL;
    where.query(pSite); // on failure the verb's position is used
    if (!m_bInPlaceActive)
        return OLE_E_NOT_INPLACEACTIVE;
    if (m_hWndCD)
        ShowWindow(m_hWndCD, SW_SHOW);
    else if (!CreateControlWindow(parent, where.position) &&
             !m_hWndCD) // a re-entrant call may have created it
        return m_bInPlaceActive ? E_FAIL : OLE_E_NOT_INPLACEACTIVE;
    CComPtr<IOleInPlaceObject> in_place;
    ControlQueryInterface(IID_IOleInPlaceObject, reinterpret_cast<void**>(&in_place));
    if (in_place && m_bInPlaceActive)
        in_place->SetObjectRects(&where.position, &where.clip);
    return m_bInPlaceActive ? S_OK : OLE_E_NOT_INPLACEACTIVE;
}

HRESULT CComControlBase::enter_ui(IOleInPlaceSite* pSite, const in_place_context& where)
{
    // Set before the call: a WM_SETFOCUS inside it must not UI-activate a second time.
    m_bUIActive = 1;
    const HRESULT hr = pSite->OnUIActivate();
    if (FAILED(hr)) {
        m_bUIActive = 0;
        return hr;
    }
    SetControlFocus(TRUE);
    CComPtr<IOleInPlaceActiveObject> active;
    ControlQueryInterface(IID_IOleInPlaceActiveObject, reinterpret_cast<void**>(&active));
    if (active) {
        set_active_object_of(where.frame, active);
        set_active_object_of(where.document, active);
    }
    // Null requests no border space; the host keeps its own tool bars.
    if (where.frame && m_bUIActive)
        where.frame->SetBorderSpace(nullptr);
    if (where.document && m_bUIActive)
        where.document->SetBorderSpace(nullptr);
    return S_OK;
}

void CComControlBase::set_active_object_of(IOleInPlaceUIWindow* pWindow, IOleInPlaceActiveObject* pActive)
{
    if (!pWindow || !m_bUIActive)
        return;
    pWindow->SetActiveObject(pActive, nullptr);
    // The window may have taken the object only after a deactivation inside that call.
    if (!m_bUIActive)
        pWindow->SetActiveObject(nullptr, nullptr);
}

void CComControlBase::leave_in_place(IOleInPlaceSite* pSite)
{
    if (!m_bInPlaceActive)
        return; // the site has already deactivated the control
    m_bInPlaceActive = 0;
    if (m_hWndCD)
        ::DestroyWindow(m_hWndCD);
    pSite->OnInPlaceDeactivate();
}

BOOL CComControlBase::SetControlFocus(BOOL bGrab) noexcept
{
    if (!m_hWndCD)
        return FALSE;
    const HWND focus = GetFocus();
    const bool inside = focus == m_hWndCD || IsChild(m_hWndCD, focus);
    if (!bGrab || inside)
        return inside;
    SetFocus(m_hWndCD);
    return GetFocus() == m_hWndCD || IsChild(m_hWndCD, GetFocus());
}

HRESULT CComControlBase::ui_activate_by_user()
{
    CComPtr<IOleObject> object;
    ControlQueryInterface(IID_IOleObject, reinterpret_cast<void**>(&object));
    const CComPtr<IOleClientSite> site = m_spClientSite;
    if (!object || !site)
        return E_NOINTERFACE;
    RECT position = m_rcPos;
    return object->DoVerb(OLEIVERB_UIACTIVATE, nullptr, site, 0, m_hWndCD, &position);
}

void CComControlBase::notify_site_of_focus(BOOL bGotFocus)
{
    const CComPtr<IOleClientSite> site = m_spClientSite;
    CComPtr<IOleControlSite> control_site;
    site.QueryInterface(&control_site);
    if (control_site)
        control_site->OnFocus(bGotFocus);
}

LRESULT CComControlBase::OnSetFocus(UINT, WPARAM, LPARAM, BOOL& bHandled)
{
    if (m_bInPlaceActive) {
        if (!m_bUIActive)
            ui_activate_by_user();
        notify_site_of_focus(TRUE);
    }
    bHandled = FALSE;
    return 0;
}

LRESULT CComControlBase::OnKillFocus(UINT, WPARAM, LPARAM, BOOL& bHandled)
{
    if (m_bInPlaceActive)
        notify_site_of_focus(FALSE);
    bHandled = FALSE;
    return 0;
}

LRESULT CComControlBase::OnMouseActivate(UINT, WPARAM, LPARAM, BOOL& bHandled)
{
    BOOL user_mode = TRUE; // the default if the site does not provide the property
    if (m_bInPlaceActive && !m_bUIActive && (FAILED(GetAmbientUserMode(user_mode)) || user_mode))
        ui_activate_by_user();
    bHandled = FALSE;
    return 0;
}

} // namespace ATL
