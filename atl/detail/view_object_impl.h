// IViewObjectExImpl: draws the control for its host and keeps the host's view advise sink.
#pragma once

#include "atl/detail/control_base.h"

namespace ATL {

template <class T>
class ATL_NO_VTABLE IViewObjectExImpl : public IViewObjectEx
{
public:
    HRESULT STDMETHODCALLTYPE Draw(DWORD dwDrawAspect, LONG lindex, void*, DVTARGETDEVICE* ptd,
                                   HDC hicTargetDev, HDC hdcDraw, LPCRECTL prcBounds, LPCRECTL prcWBounds,
                                   BOOL(__stdcall*)(ULONG_PTR), ULONG_PTR) override
    {
        ATL_DRAWINFO di{};
        di.dwDrawAspect = dwDrawAspect;
        di.lindex = lindex;
        di.ptd = ptd;
        di.hicTargetDev = hicTargetDev;
        di.hdcDraw = hdcDraw;
        di.prcBounds = prcBounds;
        di.prcWBounds = prcWBounds;
        di.bOptimize = TRUE;
        return derived()->IViewObject_Draw(di);
    }
    HRESULT STDMETHODCALLTYPE GetColorSet(DWORD, LONG, void*, DVTARGETDEVICE*, HDC,
                                          LOGPALETTE** ppColorSet) override
    {
        if (!ppColorSet)
            return E_POINTER;
        *ppColorSet = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Freeze(DWORD, LONG, void*, DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Unfreeze(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetAdvise(DWORD, DWORD advf, IAdviseSink* pAdvSink) override
    {
        CComPtr<IUnknown> self;
        derived()->ControlQueryInterface(IID_IUnknown, reinterpret_cast<void**>(&self));
        derived()->m_spAdviseSink = pAdvSink;
        if (pAdvSink && (advf & ADVF_PRIMEFIRST))
            derived()->SendOnViewChange(DVASPECT_CONTENT);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetAdvise(DWORD* pAspects, DWORD* pAdvf, IAdviseSink** ppAdvSink) override
    {
        if (pAspects)
            *pAspects = DVASPECT_CONTENT;
        if (pAdvf)
            *pAdvf = 0;
        if (ppAdvSink)
            derived()->m_spAdviseSink.CopyTo(ppAdvSink);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetExtent(DWORD dwDrawAspect, LONG, DVTARGETDEVICE*, SIZEL* lpsizel) override
    {
        return derived()->IOleObject_GetExtent(dwDrawAspect, lpsizel);
    }
    HRESULT STDMETHODCALLTYPE GetRect(DWORD, LPRECTL pRect) override
    {
        if (!pRect)
            return E_POINTER;
        *pRect = {};
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetViewStatus(DWORD* pdwStatus) override
    {
        if (!pdwStatus)
            return E_POINTER;
        *pdwStatus = T::_GetViewStatus();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE QueryHitPoint(DWORD dwAspect, LPCRECT pRectBounds, POINT ptlLoc, LONG,
                                            DWORD* pHitResult) override
    {
        if (!pRectBounds || !pHitResult)
            return E_POINTER;
        *pHitResult = HITRESULT_OUTSIDE;
        if (dwAspect != DVASPECT_CONTENT)
            return E_FAIL;
        if (PtInRect(pRectBounds, ptlLoc))
            *pHitResult = HITRESULT_HIT;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE QueryHitRect(DWORD dwAspect, LPCRECT pRectBounds, LPCRECT prcLoc, LONG,
                                           DWORD* pHitResult) override
    {
        if (!pRectBounds || !prcLoc || !pHitResult)
            return E_POINTER;
        *pHitResult = HITRESULT_OUTSIDE;
        if (dwAspect != DVASPECT_CONTENT)
            return E_FAIL;
        RECT common{};
        if (IntersectRect(&common, prcLoc, pRectBounds))
            *pHitResult = HITRESULT_HIT;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetNaturalExtent(DWORD dwAspect, LONG, DVTARGETDEVICE*, HDC,
                                               DVEXTENTINFO* pExtentInfo, LPSIZEL psizel) override
    {
        if (!pExtentInfo || !psizel)
            return E_POINTER;
        if (dwAspect != DVASPECT_CONTENT || pExtentInfo->dwExtentMode != DVEXTENT_CONTENT)
            return E_FAIL;
        *psizel = derived()->m_sizeNatural;
        return S_OK;
    }

    // Replaced by DECLARE_VIEW_STATUS, for example in a class that draws its whole rectangle.
    static DWORD _GetViewStatus() noexcept { return 0; }

protected:
    ~IViewObjectExImpl() = default;

private:
    T* derived() noexcept { return static_cast<T*>(this); }
};

} // namespace ATL

#define DECLARE_VIEW_STATUS(statusFlags)                                                                     \
    static DWORD _GetViewStatus() noexcept                                                                   \
    {                                                                                                        \
        return statusFlags;                                                                                  \
    }
