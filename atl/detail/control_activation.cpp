// In-place activation, step by step. Every step calls the site, and every site may call back: what was true
// before a call is asked again after it.
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
    HRESULT hr = entered ? EnterInPlace(site) : S_OK;
    InPlaceContext where;
    where.position = where.clip = prcPosRect ? *prcPosRect : m_rcPos;
    if (SUCCEEDED(hr)) {
        hr = ShowInPlace(site, where);
        if (FAILED(hr) && entered)
            LeaveInPlace(site);
    }
    if (FAILED(hr)) {
        // A site that led nowhere is not kept: holding one means that there is a view.
        if (asked && !m_bInPlaceActive && m_spInPlaceSite == site.p) {
            m_bNegotiatedWnd = 0;
            m_spInPlaceSite.Release();
        }
        return hr;
    }
    if (DoesVerbUIActivate(iVerb) && !m_bUIActive) {
        hr = EnterUI(site, where);
        if (FAILED(hr))
            return hr;
    }
    if (const CComPtr<IOleClientSite> shown = m_spClientSite)
        shown->ShowObject();
    return S_OK;
}

HRESULT CComControlBase::EnterInPlace(IOleInPlaceSite* pSite)
{
    HRESULT hr = pSite->CanInPlaceActivate();
    if (hr != S_OK)
        return FAILED(hr) ? hr : E_FAIL; // S_FALSE: not now
    if (m_spInPlaceSite != pSite)
        return OLE_E_NOT_INPLACEACTIVE; // closed by the site meanwhile
    m_bInPlaceActive = 1;
    hr = pSite->OnInPlaceActivate();
    if (FAILED(hr))
        m_bInPlaceActive = 0;
    return hr;
}

HRESULT CComControlBase::ShowInPlace(IOleInPlaceSite* pSite, InPlaceContext& where)
{
    HWND parent = nullptr;
    HRESULT hr = pSite->GetWindow(&parent);
    if (FAILED(hr) || !parent)
        return FAILED(hr) ? hr : E_FAIL;
    where.Ask(pSite); // without an answer the position stays the verb's
    if (!m_bInPlaceActive)
        return OLE_E_NOT_INPLACEACTIVE;
    if (m_hWndCD)
        ShowWindow(m_hWndCD, SW_SHOW);
    else if (!CreateControlWindow(parent, where.position) && !m_hWndCD) // or the site had another one made
        return m_bInPlaceActive ? E_FAIL : OLE_E_NOT_INPLACEACTIVE;
    CComPtr<IOleInPlaceObject> in_place;
    ControlQueryInterface(IID_IOleInPlaceObject, reinterpret_cast<void**>(&in_place));
    if (in_place && m_bInPlaceActive)
        in_place->SetObjectRects(&where.position, &where.clip);
    return m_bInPlaceActive ? S_OK : OLE_E_NOT_INPLACEACTIVE;
}

HRESULT CComControlBase::EnterUI(IOleInPlaceSite* pSite, const InPlaceContext& where)
{
    // Set before the site hears of it, so that the focus coming in does not activate a second time.
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
        SetActiveObjectOf(where.frame, active);
        SetActiveObjectOf(where.document, active);
    }
    // No border space is wanted: the host keeps its own tool bars.
    if (where.frame && m_bUIActive)
        where.frame->SetBorderSpace(nullptr);
    if (where.document && m_bUIActive)
        where.document->SetBorderSpace(nullptr);
    return S_OK;
}

void CComControlBase::SetActiveObjectOf(IOleInPlaceUIWindow* pWindow, IOleInPlaceActiveObject* pActive)
{
    if (!pWindow || !m_bUIActive)
        return;
    pWindow->SetActiveObject(pActive, nullptr);
    // The window may have taken the object only after a deactivation inside that call.
    if (!m_bUIActive)
        pWindow->SetActiveObject(nullptr, nullptr);
}

void CComControlBase::LeaveInPlace(IOleInPlaceSite* pSite)
{
    if (!m_bInPlaceActive)
        return; // the site has deactivated the control by itself
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

HRESULT CComControlBase::UIActivateByUser()
{
    CComPtr<IOleObject> object;
    ControlQueryInterface(IID_IOleObject, reinterpret_cast<void**>(&object));
    const CComPtr<IOleClientSite> site = m_spClientSite;
    if (!object || !site)
        return E_NOINTERFACE;
    RECT position = m_rcPos;
    return object->DoVerb(OLEIVERB_UIACTIVATE, nullptr, site, 0, m_hWndCD, &position);
}

void CComControlBase::TellSiteOfFocus(BOOL bGotFocus)
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
            UIActivateByUser();
        TellSiteOfFocus(TRUE);
    }
    bHandled = FALSE;
    return 0;
}

LRESULT CComControlBase::OnKillFocus(UINT, WPARAM, LPARAM, BOOL& bHandled)
{
    if (m_bInPlaceActive)
        TellSiteOfFocus(FALSE);
    bHandled = FALSE;
    return 0;
}

LRESULT CComControlBase::OnMouseActivate(UINT, WPARAM, LPARAM, BOOL& bHandled)
{
    BOOL user_mode = TRUE; // also for a site that does not tell
    if (m_bInPlaceActive && !m_bUIActive && (FAILED(GetAmbientUserMode(user_mode)) || user_mode))
        UIActivateByUser();
    bHandled = FALSE;
    return 0;
}

} // namespace ATL
