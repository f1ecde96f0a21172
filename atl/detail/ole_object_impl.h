// IOleObjectImpl: the control as an object embedded in a host.
#pragma once

#include "atl/detail/control_base.h"

namespace ATL {

template <class T>
class ATL_NO_VTABLE IOleObjectImpl : public IOleObject
{
public:
    STDMETHOD(SetClientSite)(IOleClientSite* pClientSite) override
    {
        return Self()->IOleObject_SetClientSite(pClientSite);
    }
    STDMETHOD(GetClientSite)(IOleClientSite** ppClientSite) override
    {
        return Self()->m_spClientSite.CopyTo(ppClientSite);
    }
    STDMETHOD(SetHostNames)(LPCOLESTR, LPCOLESTR) override { return S_OK; }
    STDMETHOD(Close)(DWORD dwSaveOption) override { return Self()->IOleObject_Close(dwSaveOption); }
    STDMETHOD(SetMoniker)(DWORD, IMoniker*) override { return E_NOTIMPL; }
    STDMETHOD(GetMoniker)(DWORD, DWORD, IMoniker** ppmk) override { return NotImplemented(ppmk); }
    STDMETHOD(InitFromData)(IDataObject*, BOOL, DWORD) override { return E_NOTIMPL; }
    STDMETHOD(GetClipboardData)(DWORD, IDataObject** ppDataObject) override
    {
        return NotImplemented(ppDataObject);
    }
    STDMETHOD(DoVerb)(LONG iVerb, LPMSG, IOleClientSite*, LONG, HWND hwndParent, LPCRECT prcPosRect) override
    {
        T* const pT = Self();
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
    STDMETHOD(EnumVerbs)(IEnumOLEVERB** ppEnumOleVerb) override
    {
        if (!ppEnumOleVerb)
            return E_POINTER;
        *ppEnumOleVerb = nullptr;
        return OleRegEnumVerbs(T::GetObjectCLSID(), ppEnumOleVerb);
    }
    STDMETHOD(Update)() override { return S_OK; }
    STDMETHOD(IsUpToDate)() override { return S_OK; }
    STDMETHOD(GetUserClassID)(CLSID* pClsid) override
    {
        if (!pClsid)
            return E_POINTER;
        *pClsid = T::GetObjectCLSID();
        return S_OK;
    }
    STDMETHOD(GetUserType)(DWORD dwFormOfType, LPOLESTR* pszUserType) override
    {
        if (!pszUserType)
            return E_POINTER;
        *pszUserType = nullptr;
        return OleRegGetUserType(T::GetObjectCLSID(), dwFormOfType, pszUserType);
    }
    STDMETHOD(SetExtent)(DWORD dwDrawAspect, SIZEL* psizel) override
    {
        return Self()->IOleObject_SetExtent(dwDrawAspect, psizel);
    }
    STDMETHOD(GetExtent)(DWORD dwDrawAspect, SIZEL* psizel) override
    {
        return Self()->IOleObject_GetExtent(dwDrawAspect, psizel);
    }
    STDMETHOD(Advise)(IAdviseSink* pAdvSink, DWORD* pdwConnection) override
    {
        return Self()->IOleObject_Advise(pAdvSink, pdwConnection);
    }
    STDMETHOD(Unadvise)(DWORD dwConnection) override
    {
        const CComPtr<IOleAdviseHolder> holder = Self()->m_spOleAdviseHolder;
        return holder ? holder->Unadvise(dwConnection) : OLE_E_NOCONNECTION;
    }
    STDMETHOD(EnumAdvise)(IEnumSTATDATA** ppenumAdvise) override
    {
        if (!ppenumAdvise)
            return E_POINTER;
        *ppenumAdvise = nullptr;
        const CComPtr<IOleAdviseHolder> holder = Self()->m_spOleAdviseHolder;
        return holder ? holder->EnumAdvise(ppenumAdvise) : E_FAIL;
    }
    STDMETHOD(GetMiscStatus)(DWORD dwAspect, DWORD* pdwStatus) override
    {
        if (!pdwStatus)
            return E_POINTER;
        *pdwStatus = 0;
        return OleRegGetMiscStatus(T::GetObjectCLSID(), dwAspect, pdwStatus);
    }
    STDMETHOD(SetColorScheme)(LOGPALETTE*) override { return E_NOTIMPL; }

    // What each verb does; a class replaces the ones it wants.
    HRESULT DoVerbPrimary(LPCRECT prcPosRect, HWND hwndParent)
    {
        // In a designer the primary verb would open the properties, of which there are none.
        BOOL user_mode = TRUE;
        if (SUCCEEDED(Self()->GetAmbientUserMode(user_mode)) && !user_mode)
            return E_NOTIMPL;
        return Self()->DoVerbInPlaceActivate(prcPosRect, hwndParent);
    }
    HRESULT DoVerbShow(LPCRECT prcPosRect, HWND)
    {
        return Self()->InPlaceActivate(OLEIVERB_SHOW, prcPosRect);
    }
    HRESULT DoVerbInPlaceActivate(LPCRECT prcPosRect, HWND)
    {
        const HRESULT hr = Self()->InPlaceActivate(OLEIVERB_INPLACEACTIVATE, prcPosRect);
        if (SUCCEEDED(hr))
            Self()->FireViewChange();
        return hr;
    }
    HRESULT DoVerbUIActivate(LPCRECT prcPosRect, HWND)
    {
        return Self()->InPlaceActivate(OLEIVERB_UIACTIVATE, prcPosRect);
    }
    HRESULT DoVerbHide(LPCRECT, HWND)
    {
        T* const pT = Self();
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
    T* Self() noexcept { return static_cast<T*>(this); }

    template <class Q>
    static HRESULT NotImplemented(Q** out) noexcept
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        return E_NOTIMPL;
    }
};

} // namespace ATL
