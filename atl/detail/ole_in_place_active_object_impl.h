// IOleInPlaceActiveObjectImpl: the frame's interface to the UI-active control.
#pragma once

#include "atl/detail/control_base.h"

namespace ATL {

// Offers a key message to the control site for its own keyboard handling. S_FALSE: not handled.
HRESULT offer_accelerator_to_site(IOleClientSite* site, LPMSG message) noexcept;

template <class T>
class ATL_NO_VTABLE IOleInPlaceActiveObjectImpl : public IOleInPlaceActiveObject
{
public:
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* phwnd) override
    {
        if (!phwnd)
            return E_POINTER;
        *phwnd = derived()->m_hWndCD;
        return *phwnd ? S_OK : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(LPMSG pMsg) override
    {
        if (!pMsg)
            return E_POINTER;
        HRESULT result = S_OK;
        if (derived()->PreTranslateAccelerator(pMsg, result))
            return result;
        const CComPtr<IOleClientSite> site = derived()->m_spClientSite;
        return offer_accelerator_to_site(site, pMsg);
    }
    HRESULT STDMETHODCALLTYPE OnFrameWindowActivate(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnDocWindowActivate(BOOL fActivate) override
    {
        return fActivate ? S_OK : derived()->UIDeactivate();
    }
    HRESULT STDMETHODCALLTYPE ResizeBorder(LPCRECT, IOleInPlaceUIWindow*, BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE EnableModeless(BOOL) override { return S_OK; }

    // Replaced by a class that handles keys before the site: TRUE if it handled the message, with the result.
    BOOL PreTranslateAccelerator(LPMSG, HRESULT&) { return FALSE; }

protected:
    ~IOleInPlaceActiveObjectImpl() = default;

private:
    T* derived() noexcept { return static_cast<T*>(this); }
};

} // namespace ATL
