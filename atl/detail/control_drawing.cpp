// Drawing of a control: into its window, into a host's device context and into a metafile.
#include "atl/detail/control_base.h"

#include <algorithm>

namespace ATL {

HRESULT CComControlBase::OnDraw(ATL_DRAWINFO&)
{
    return S_OK;
}

HRESULT CComControlBase::OnDrawAdvanced(ATL_DRAWINFO& di)
{
    if (!di.bOptimize || GetDeviceCaps(di.hdcDraw, TECHNOLOGY) == DT_METAFILE)
        return OnDraw(di);
    // OnDraw expects pixels with the origin at the top left.
    RECTL bounds = *di.prcBounds;
    const int saved = SaveDC(di.hdcDraw);
    LPtoDP(di.hdcDraw, reinterpret_cast<POINT*>(&bounds), 2);
    SetMapMode(di.hdcDraw, MM_TEXT);
    SetWindowOrgEx(di.hdcDraw, 0, 0, nullptr);
    SetViewportOrgEx(di.hdcDraw, 0, 0, nullptr);
    di.prcBounds = &bounds;
    const HRESULT hr = OnDraw(di);
    RestoreDC(di.hdcDraw, saved);
    return hr;
}

HRESULT CComControlBase::IViewObject_Draw(const ATL_DRAWINFO& request)
{
    if (!request.hdcDraw || !request.prcBounds)
        return E_INVALIDARG;
    if (request.dwDrawAspect != DVASPECT_CONTENT && request.dwDrawAspect != DVASPECT_OPAQUE &&
        request.dwDrawAspect != DVASPECT_TRANSPARENT)
        return DV_E_DVASPECT;
    ATL_DRAWINFO di = request;
    di.cbSize = sizeof di;
    return OnDrawAdvanced(di);
}

LRESULT CComControlBase::OnPaint(UINT, WPARAM wParam, LPARAM, BOOL&)
{
    PAINTSTRUCT paint{};
    RECT client{};
    GetClientRect(m_hWndCD, &client);
    const RECTL bounds{client.left, client.top, client.right, client.bottom};
    ATL_DRAWINFO di{};
    di.cbSize = sizeof di;
    di.dwDrawAspect = DVASPECT_CONTENT;
    di.lindex = -1;
    di.prcBounds = &bounds;
    if (wParam) { // a caller's device context
        di.hdcDraw = reinterpret_cast<HDC>(wParam);
        OnDrawAdvanced(di);
        return 0;
    }
    const HWND window = m_hWndCD;
    di.hdcDraw = BeginPaint(window, &paint);
    if (di.hdcDraw) {
        try {
            OnDrawAdvanced(di);
        } catch (...) {
            EndPaint(window, &paint);
            throw;
        }
        EndPaint(window, &paint);
    }
    return 0;
}

HRESULT CComControlBase::IDataObject_GetData(FORMATETC* pformatetcIn, STGMEDIUM* pmedium)
{
    if (!pformatetcIn || !pmedium)
        return E_POINTER;
    *pmedium = {};
    if (pformatetcIn->cfFormat != CF_METAFILEPICT || !(pformatetcIn->tymed & TYMED_MFPICT))
        return DV_E_FORMATETC;
    if (pformatetcIn->dwAspect != DVASPECT_CONTENT)
        return DV_E_DVASPECT;
    const HDC metafile_dc = CreateMetaFileW(nullptr);
    if (!metafile_dc)
        return E_OUTOFMEMORY;
    SIZEL pixels{};
    AtlHiMetricToPixel(&m_sizeExtent, &pixels);
    SetWindowOrgEx(metafile_dc, 0, 0, nullptr);
    SetWindowExtEx(metafile_dc, pixels.cx, pixels.cy, nullptr);
    const RECTL bounds{0, 0, pixels.cx, pixels.cy};
    ATL_DRAWINFO di{};
    di.dwDrawAspect = DVASPECT_CONTENT;
    di.lindex = -1;
    di.hdcDraw = metafile_dc;
    di.prcBounds = di.prcWBounds = &bounds;
    const HRESULT hr = IViewObject_Draw(di);
    const HMETAFILE metafile = CloseMetaFile(metafile_dc);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE | GMEM_SHARE, sizeof(METAFILEPICT));
    auto* const picture = memory ? static_cast<METAFILEPICT*>(GlobalLock(memory)) : nullptr;
    if (FAILED(hr) || !metafile || !picture) {
        if (memory)
            GlobalFree(memory);
        if (metafile)
            DeleteMetaFile(metafile);
        return FAILED(hr) ? hr : E_OUTOFMEMORY;
    }
    *picture = {MM_ANISOTROPIC, m_sizeExtent.cx, m_sizeExtent.cy, metafile};
    GlobalUnlock(memory);
    pmedium->tymed = TYMED_MFPICT;
    pmedium->hMetaFilePict = memory;
    return S_OK;
}

} // namespace ATL
