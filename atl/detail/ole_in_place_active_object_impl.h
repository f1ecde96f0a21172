// IOleInPlaceActiveObjectImpl: the frame's handle on the control that has its user interface.
#pragma once

#include "atl/detail/control_base.h"

namespace ATL {

// Offers a key message to the site, which may have it for its own keyboard handling. S_FALSE: nobody took it.
HRESULT OfferAcceleratorToSite(IOleClientSite* site, LPMSG message) noexcept;

template <class T>
class ATL_NO_VTABLE IOleInPlaceActiveObjectImpl : public IOleInPlaceActiveObject
{
public:
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* phwnd) override
    {
        if (!phwnd)
            return E_POINTER;
        *phwnd = Self()->m_hWndCD;
        return *phwnd ? S_OK : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(LPMSG pMsg) override
    {
        if (!pMsg)
            return E_POINTER;
        HRESULT result = S_OK;
        if (Self()->PreTranslateAccelerator(pMsg, result))
            return result;
        const CComPtr<IOleClientSite> site = Self()->m_spClientSite;
        return OfferAcceleratorToSite(site, pMsg);
    }
    HRESULT STDMETHODCALLTYPE OnFrameWindowActivate(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnDocWindowActivate(BOOL fActivate) override
    {
        return fActivate ? S_OK : Self()->UIDeactivate();
    }
    HRESULT STDMETHODCALLTYPE ResizeBorder(LPCRECT, IOleInPlaceUIWindow*, BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE EnableModeless(BOOL) override { return S_OK; }

    // For a class that wants keys before the site: TRUE when it took the message, with the answer.
    BOOL PreTranslateAccelerator(LPMSG, HRESULT&) { return FALSE; }

protected:
    ~IOleInPlaceActiveObjectImpl() = default;

private:
    T* Self() noexcept { return static_cast<T*>(this); }
};

} // namespace ATL
