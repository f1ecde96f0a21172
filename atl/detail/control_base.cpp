#include "atl/detail/control_base.h"

#include <olectl.h>

namespace ATL {
namespace {

constexpr int himetric_per_inch = 2540;

SIZE pixels_per_inch() noexcept
{
    SIZE result{96, 96};
    if (const HDC screen = GetDC(nullptr)) {
        result.cx = GetDeviceCaps(screen, LOGPIXELSX);
        result.cy = GetDeviceCaps(screen, LOGPIXELSY);
        ReleaseDC(nullptr, screen);
    }
    return result;
}

} // namespace

void AtlHiMetricToPixel(const SIZEL* lpSizeInHiMetric, LPSIZEL lpSizeInPix) noexcept
{
    const SIZE density = pixels_per_inch();
    lpSizeInPix->cx = MulDiv(lpSizeInHiMetric->cx, density.cx, himetric_per_inch);
    lpSizeInPix->cy = MulDiv(lpSizeInHiMetric->cy, density.cy, himetric_per_inch);
}

void AtlPixelToHiMetric(const SIZEL* lpSizeInPix, LPSIZEL lpSizeInHiMetric) noexcept
{
    const SIZE density = pixels_per_inch();
    lpSizeInHiMetric->cx = MulDiv(lpSizeInPix->cx, himetric_per_inch, density.cx);
    lpSizeInHiMetric->cy = MulDiv(lpSizeInPix->cy, himetric_per_inch, density.cy);
}

CComControlBase::CComControlBase(HWND& h) noexcept : m_hWndCD(h)
{
    // Two by two inches until the host sets an extent.
    m_sizeNatural = {2 * himetric_per_inch, 2 * himetric_per_inch};
    m_sizeExtent = m_sizeNatural;
}

BOOL CComControlBase::DoesVerbActivate(LONG iVerb) const noexcept
{
    return iVerb == OLEIVERB_UIACTIVATE || iVerb == OLEIVERB_PRIMARY || iVerb == OLEIVERB_SHOW ||
           iVerb == OLEIVERB_INPLACEACTIVATE;
}

BOOL CComControlBase::DoesVerbUIActivate(LONG iVerb) const noexcept
{
    return iVerb == OLEIVERB_UIACTIVATE || iVerb == OLEIVERB_PRIMARY;
}

HRESULT CComControlBase::GetAmbientProperty(DISPID dispid, VARIANT& var) noexcept
{
    VariantInit(&var);
    const CComPtr<IDispatch> ambient = m_spAmbientDispatch;
    if (!ambient)
        return E_FAIL;
    DISPPARAMS no_arguments{};
    return ambient->Invoke(dispid, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &no_arguments, &var,
                           nullptr, nullptr);
}

HRESULT CComControlBase::GetAmbientUserMode(BOOL& bUserMode) noexcept
{
    VARIANT given{};
    const HRESULT hr = GetAmbientProperty(DISPID_AMBIENT_USERMODE, given);
    if (FAILED(hr))
        return hr; // what it left is neither used nor freed
    CComVariant var;
    static_cast<VARIANT&>(var) = given;
    if (var.vt != VT_BOOL)
        return DISP_E_TYPEMISMATCH;
    bUserMode = var.boolVal != VARIANT_FALSE;
    return S_OK;
}

HRESULT CComControlBase::SendOnRename(IMoniker* pmk) noexcept
{
    const CComPtr<IOleAdviseHolder> holder = m_spOleAdviseHolder;
    return holder ? holder->SendOnRename(pmk) : S_OK;
}

HRESULT CComControlBase::SendOnSave() noexcept
{
    const CComPtr<IOleAdviseHolder> holder = m_spOleAdviseHolder;
    return holder ? holder->SendOnSave() : S_OK;
}

HRESULT CComControlBase::SendOnClose() noexcept
{
    const CComPtr<IOleAdviseHolder> holder = m_spOleAdviseHolder;
    return holder ? holder->SendOnClose() : S_OK;
}

HRESULT CComControlBase::SendOnDataChange(DWORD advf) noexcept
{
    const CComPtr<IDataAdviseHolder> holder = m_spDataAdviseHolder;
    if (!holder)
        return S_OK;
    CComPtr<IDataObject> data;
    ControlQueryInterface(IID_IDataObject, reinterpret_cast<void**>(&data));
    return data ? holder->SendOnDataChange(data, 0, advf) : E_NOINTERFACE;
}

HRESULT CComControlBase::SendOnViewChange(DWORD dwAspect, LONG lindex) noexcept
{
    if (const CComPtr<IAdviseSink> sink = m_spAdviseSink)
        sink->OnViewChange(dwAspect, lindex);
    return S_OK;
}

HRESULT CComControlBase::FireViewChange() noexcept
{
    if (!m_bInPlaceActive)
        return SendOnViewChange(DVASPECT_CONTENT);
    if (m_hWndCD)
        InvalidateRect(m_hWndCD, nullptr, TRUE);
    return S_OK;
}

HRESULT CComControlBase::IOleObject_SetClientSite(IOleClientSite* pClientSite)
{
    CComPtr<IUnknown> self;
    ControlQueryInterface(IID_IUnknown, reinterpret_cast<void**>(&self));
    CComPtr<IOleClientSite> site(pClientSite);
    CComQIPtr<IDispatch> ambient(pClientSite);
    // An in-place site obtained from the old client site is invalid with the new one.
    CComPtr<IOleInPlaceSite> stale;
    if (m_bNegotiatedWnd && !m_bInPlaceActive) {
        stale.Attach(m_spInPlaceSite.Detach());
        m_bNegotiatedWnd = 0;
    }
    // The old pointers are released on return, when the object is consistent again.
    std::swap(m_spClientSite.p, site.p);
    std::swap(m_spAmbientDispatch.p, ambient.p);
    return S_OK;
}

HRESULT CComControlBase::IOleObject_Close(DWORD dwSaveOption)
{
    CComPtr<IUnknown> self;
    ControlQueryInterface(IID_IUnknown, reinterpret_cast<void**>(&self));
    if (const CComPtr<IOleClientSite> site = m_spClientSite; site && m_hWndCD)
        site->OnShowWindow(FALSE);
    if (m_bInPlaceActive) {
        CComPtr<IOleInPlaceObject> in_place;
        ControlQueryInterface(IID_IOleInPlaceObject, reinterpret_cast<void**>(&in_place));
        const HRESULT hr = in_place ? in_place->InPlaceDeactivate() : E_NOINTERFACE;
        if (FAILED(hr))
            return hr;
    }
    if (dwSaveOption != OLECLOSE_NOSAVE && m_bRequiresSave) {
        if (const CComPtr<IOleClientSite> site = m_spClientSite)
            site->SaveObject();
        SendOnSave();
    }
    SendOnClose();
    m_bNegotiatedWnd = 0;
    m_spInPlaceSite.Release();
    m_spAdviseSink.Release();
    return S_OK;
}

HRESULT CComControlBase::IOleObject_SetExtent(DWORD dwDrawAspect, SIZEL* psizel)
{
    if (!psizel)
        return E_POINTER;
    if (dwDrawAspect != DVASPECT_CONTENT)
        return DV_E_DVASPECT;
    if (psizel->cx == m_sizeExtent.cx && psizel->cy == m_sizeExtent.cy)
        return S_OK;
    CComPtr<IUnknown> self;
    ControlQueryInterface(IID_IUnknown, reinterpret_cast<void**>(&self));
    m_sizeExtent = *psizel;
    if (m_bResizeNatural)
        m_sizeNatural = *psizel;
    SetDirty(TRUE);
    SendOnDataChange();
    if (m_bRecomposeOnResize)
        FireViewChange();
    return S_OK;
}

HRESULT CComControlBase::IOleObject_GetExtent(DWORD dwDrawAspect, SIZEL* psizel)
{
    if (!psizel)
        return E_POINTER;
    if (dwDrawAspect != DVASPECT_CONTENT)
        return DV_E_DVASPECT;
    *psizel = m_sizeExtent;
    return S_OK;
}

HRESULT CComControlBase::IOleObject_Advise(IAdviseSink* pAdvSink, DWORD* pdwConnection)
{
    if (!pdwConnection)
        return E_POINTER;
    *pdwConnection = 0;
    if (!pAdvSink)
        return E_POINTER;
    if (!m_spOleAdviseHolder) {
        const HRESULT hr = CreateOleAdviseHolder(&m_spOleAdviseHolder);
        if (FAILED(hr))
            return hr;
    }
    const CComPtr<IOleAdviseHolder> holder = m_spOleAdviseHolder;
    return holder->Advise(pAdvSink, pdwConnection);
}

HRESULT CComControlBase::IQuickActivate_QuickActivate(QACONTAINER* pQACont, QACONTROL* pQACtrl)
{
    if (!pQACont || !pQACtrl)
        return E_POINTER;
    if (pQACont->cbSize < sizeof *pQACont || pQACtrl->cbSize < sizeof *pQACtrl)
        return E_INVALIDARG;
    const ULONG size = pQACtrl->cbSize;
    *pQACtrl = {};
    pQACtrl->cbSize = size;
    CComPtr<IOleObject> object;
    CComPtr<IViewObjectEx> view;
    ControlQueryInterface(IID_IOleObject, reinterpret_cast<void**>(&object));
    ControlQueryInterface(IID_IViewObjectEx, reinterpret_cast<void**>(&view));
    if (!object || !view)
        return E_FAIL;
    object->SetClientSite(pQACont->pClientSite);
    if (pQACont->pAdviseSink)
        view->SetAdvise(DVASPECT_CONTENT, 0, pQACont->pAdviseSink);
    object->GetMiscStatus(DVASPECT_CONTENT, &pQACtrl->dwMiscStatus);
    view->GetViewStatus(&pQACtrl->dwViewStatus);
    return S_OK;
}

} // namespace ATL
