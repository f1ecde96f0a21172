// The interfaces that the hosted control calls: client site, in-place site, container, services and ambient
// properties.
#include "atl/detail/ax_ambient.h"
#include "atl/detail/ax_frame.h"
#include "atl/detail/ax_host_window.h"

namespace ATL {
namespace {

template <class T>
HRESULT not_implemented(T** out) noexcept
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    return E_NOTIMPL;
}

} // namespace

HRESULT STDMETHODCALLTYPE CAxHostWindow::GetMoniker(DWORD, DWORD, IMoniker** ppmk)
{
    return not_implemented(ppmk);
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::GetContainer(IOleContainer** ppContainer)
{
    if (!ppContainer)
        return E_POINTER;
    *ppContainer = this;
    AddRef();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::GetWindow(HWND* phwnd)
{
    if (!phwnd)
        return E_POINTER;
    *phwnd = m_hWnd;
    return m_hWnd ? S_OK : E_FAIL;
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::OnInPlaceActivate()
{
    if (!m_spUnknown || m_bReleasing)
        return E_UNEXPECTED;
    const CComPtr<IUnknown> control = m_spUnknown;
    const CComQIPtr<IOleInPlaceObject> in_place(control);
    m_spInPlaceObject = in_place;
    return in_place ? S_OK : E_NOINTERFACE;
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::OnUIActivate()
{
    m_bUIActive = true;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::OnUIDeactivate(BOOL)
{
    m_bUIActive = false;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::OnInPlaceDeactivate()
{
    m_bUIActive = false;
    m_spInPlaceObject.Release();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::GetWindowContext(IOleInPlaceFrame** ppFrame,
                                                          IOleInPlaceUIWindow** ppDoc, LPRECT lprcPosRect,
                                                          LPRECT lprcClipRect,
                                                          LPOLEINPLACEFRAMEINFO lpFrameInfo)
{
    if (ppFrame)
        *ppFrame = nullptr;
    if (ppDoc)
        *ppDoc = nullptr; // the frame is the document window
    if (!ppFrame || !ppDoc || !lprcPosRect || !lprcClipRect || !lpFrameInfo)
        return E_POINTER;
    CComObject<CAxFrameWindow>* frame = nullptr;
    const HRESULT hr = CComObject<CAxFrameWindow>::CreateInstance(&frame);
    if (FAILED(hr))
        return hr;
    frame->AddRef();
    frame->m_hWnd = m_hWnd ? GetAncestor(m_hWnd, GA_ROOT) : nullptr;
    *ppFrame = frame;
    *lprcPosRect = *lprcClipRect = client_area();
    lpFrameInfo->fMDIApp = FALSE;
    lpFrameInfo->hwndFrame = frame->m_hWnd;
    lpFrameInfo->haccel = nullptr;
    lpFrameInfo->cAccelEntries = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::OnPosRectChange(LPCRECT)
{
    // The control always fills the window.
    const RECT area = client_area();
    const CComPtr<IOleInPlaceObject> in_place = m_spInPlaceObject;
    return in_place ? in_place->SetObjectRects(&area, &area) : E_UNEXPECTED;
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::GetExtendedControl(IDispatch** ppDisp)
{
    return not_implemented(ppDisp);
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::ParseDisplayName(IBindCtx*, LPOLESTR, ULONG*, IMoniker** ppmkOut)
{
    return not_implemented(ppmkOut);
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::EnumObjects(DWORD, IEnumUnknown** ppenum)
{
    return not_implemented(ppenum);
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::QueryService(REFGUID guidService, REFIID riid, void** ppvObject)
{
    if (!ppvObject)
        return E_POINTER;
    *ppvObject = nullptr;
    const CComQIPtr<IServiceProvider> services(m_spUnkSite);
    return services ? services->QueryService(guidService, riid, ppvObject) : E_NOINTERFACE;
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::GetTypeInfoCount(UINT* pctinfo)
{
    if (!pctinfo)
        return E_POINTER;
    *pctinfo = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::GetTypeInfo(UINT, LCID, ITypeInfo** ppTInfo)
{
    return not_implemented(ppTInfo);
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::Invoke(DISPID dispIdMember, REFIID riid, LCID, WORD wFlags,
                                                DISPPARAMS*, VARIANT* pVarResult, EXCEPINFO*, UINT*)
{
    if (!IsEqualIID(riid, IID_NULL))
        return DISP_E_UNKNOWNINTERFACE;
    if (!(wFlags & DISPATCH_PROPERTYGET))
        return DISP_E_MEMBERNOTFOUND;
    if (!pVarResult)
        return E_POINTER;
    return ambient_property(dispIdMember, *pVarResult);
}

} // namespace ATL
