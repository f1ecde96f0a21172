// IOleObjectImpl: the control as an embedded object.
#pragma once

#include "atl/detail/control_base.h"

namespace ATL {

template <class T>
class ATL_NO_VTABLE IOleObjectImpl : public IOleObject
{
public:
    HRESULT STDMETHODCALLTYPE SetClientSite(IOleClientSite* pClientSite) override
    {
        return derived()->IOleObject_SetClientSite(pClientSite);
    }
    HRESULT STDMETHODCALLTYPE GetClientSite(IOleClientSite** ppClientSite) override
    {
        return derived()->m_spClientSite.CopyTo(ppClientSite);
    }
    HRESULT STDMETHODCALLTYPE SetHostNames(LPCOLESTR, LPCOLESTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Close(DWORD dwSaveOption) override
    {
        return derived()->IOleObject_Close(dwSaveOption);
    }
    HRESULT STDMETHODCALLTYPE SetMoniker(DWORD, IMoniker*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMoniker(DWORD, DWORD, IMoniker** ppmk) override
    {
        return not_implemented(ppmk);
    }
    HRESULT STDMETHODCALLTYPE InitFromData(IDataObject*, BOOL, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetClipboardData(DWORD, IDataObject** ppDataObject) override
    {
        return not_implemented(ppDataObject);
    }
    HRESULT STDMETHODCALLTYPE DoVerb(LONG iVerb, LPMSG, IOleClientSite*, LONG, HWND hwndParent,
                                     LPCRECT prcPosRect) override
    {
        T* const pT = derived();
        CComPtr<IUnknown> self; // the host may release the control inside a verb
        pT->ControlQueryInterface(IID_IUnknown, reinterpret_cast<void**>(&self));
        switch (iVerb) {
        case OLEIVERB_PRIMARY:
            return pT->DoVerbPrimary(prcPosRect, hwndParent);
        case OLEIVERB_SHOW:
            return pT->DoVerbShow(prcPosRect, hwndParent);
        case OLEIVERB_INPLACEACTIVATE:
            return pT->DoVerbInPlaceActivate(prcPosRect, hwndParent);
        case OLEIVERB_UIACTIVATE:
            return pT->DoVerbUIActivate(prcPosRect, hwndParent);
        case OLEIVERB_HIDE:
            return pT->DoVerbHide(prcPosRect, hwndParent);
        case OLEIVERB_OPEN:
            return pT->DoVerbOpen(prcPosRect, hwndParent);
        case OLEIVERB_DISCARDUNDOSTATE:
            return pT->DoVerbDiscardUndo(prcPosRect, hwndParent);
        default:
            return E_NOTIMPL;
        }
    }
    HRESULT STDMETHODCALLTYPE EnumVerbs(IEnumOLEVERB** ppEnumOleVerb) override
    {
        if (!ppEnumOleVerb)
            return E_POINTER;
        *ppEnumOleVerb = nullptr;
        return OleRegEnumVerbs(T::GetObjectCLSID(), ppEnumOleVerb);
    }
    HRESULT STDMETHODCALLTYPE Update() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE IsUpToDate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetUserClassID(CLSID* pClsid) override
    {
        if (!pClsid)
            return E_POINTER;
        *pClsid = T::GetObjectCLSID();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetUserType(DWORD dwFormOfType, LPOLESTR* pszUserType) override
    {
        if (!pszUserType)
            return E_POINTER;
        *pszUserType = nullptr;
        return OleRegGetUserType(T::GetObjectCLSID(), dwFormOfType, pszUserType);
    }
    HRESULT STDMETHODCALLTYPE SetExtent(DWORD dwDrawAspect, SIZEL* psizel) override
    {
        return derived()->IOleObject_SetExtent(dwDrawAspect, psizel);
    }
    HRESULT STDMETHODCALLTYPE GetExtent(DWORD dwDrawAspect, SIZEL* psizel) override
    {
        return derived()->IOleObject_GetExtent(dwDrawAspect, psizel);
    }
    HRESULT STDMETHODCALLTYPE Advise(IAdviseSink* pAdvSink, DWORD* pdwConnection) override
    {
        return derived()->IOleObject_Advise(pAdvSink, pdwConnection);
    }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD dwConnection) override
    {
        const CComPtr<IOleAdviseHolder> holder = derived()->m_spOleAdviseHolder;
        return holder ? holder->Unadvise(dwConnection) : OLE_E_NOCONNECTION;
    }
    HRESULT STDMETHODCALLTYPE EnumAdvise(IEnumSTATDATA** ppenumAdvise) override
    {
        if (!ppenumAdvise)
            return E_POINTER;
        *ppenumAdvise = nullptr;
        const CComPtr<IOleAdviseHolder> holder = derived()->m_spOleAdviseHolder;
        return holder ? holder->EnumAdvise(ppenumAdvise) : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE GetMiscStatus(DWORD dwAspect, DWORD* pdwStatus) override
    {
        if (!pdwStatus)
            return E_POINTER;
        *pdwStatus = 0;
        return OleRegGetMiscStatus(T::GetObjectCLSID(), dwAspect, pdwStatus);
    }
    HRESULT STDMETHODCALLTYPE SetColorScheme(LOGPALETTE*) override { return E_NOTIMPL; }

    // The verbs; a class replaces those that it implements itself.
    HRESULT DoVerbPrimary(LPCRECT prcPosRect, HWND hwndParent)
    {
        // In design mode the primary verb opens the property pages; there are none.
        BOOL user_mode = TRUE;
        if (SUCCEEDED(derived()->GetAmbientUserMode(user_mode)) && !user_mode)
            return E_NOTIMPL;
        return derived()->DoVerbInPlaceActivate(prcPosRect, hwndParent);
    }
    HRESULT DoVerbShow(LPCRECT prcPosRect, HWND)
    {
        return derived()->InPlaceActivate(OLEIVERB_SHOW, prcPosRect);
    }
    HRESULT DoVerbInPlaceActivate(LPCRECT prcPosRect, HWND)
    {
        const HRESULT hr = derived()->InPlaceActivate(OLEIVERB_INPLACEACTIVATE, prcPosRect);
        if (SUCCEEDED(hr))
            derived()->FireViewChange();
        return hr;
    }
    HRESULT DoVerbUIActivate(LPCRECT prcPosRect, HWND)
    {
        return derived()->InPlaceActivate(OLEIVERB_UIACTIVATE, prcPosRect);
    }
    HRESULT DoVerbHide(LPCRECT, HWND)
    {
        T* const pT = derived();
        CComPtr<IOleInPlaceObject> in_place;
        pT->ControlQueryInterface(IID_IOleInPlaceObject, reinterpret_cast<void**>(&in_place));
        if (in_place)
            in_place->UIDeactivate();
        if (pT->m_hWndCD)
            ::ShowWindow(pT->m_hWndCD, SW_HIDE);
        return S_OK;
    }
    HRESULT DoVerbOpen(LPCRECT, HWND) { return S_OK; }
    HRESULT DoVerbDiscardUndo(LPCRECT, HWND) { return S_OK; }

protected:
    ~IOleObjectImpl() = default;

private:
    T* derived() noexcept { return static_cast<T*>(this); }

    template <class Q>
    static HRESULT not_implemented(Q** out) noexcept
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        return E_NOTIMPL;
    }
};

} // namespace ATL
