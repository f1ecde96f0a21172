// IOleDocumentView for a control that is its own single view. The view's site is the control's in-place site.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <docobj.h>

#include <atomic>

namespace quill::detail {

// True during SetRect. One flag for the process: SetRect must not be re-entered for any document.
inline std::atomic<bool> setting_rect{false};

} // namespace quill::detail

template <class T>
class ATL_NO_VTABLE IOleDocumentViewImpl : public IOleDocumentView
{
public:
    STDMETHOD(SetInPlaceSite)(IOleInPlaceSite* site) override
    {
        T* const document = static_cast<T*>(this);
        const ATL::CComPtr<IUnknown> keep_alive(document->GetUnknown());
        if (document->m_spInPlaceSite) {
            UIActivate(FALSE);
            const HRESULT result = document->InPlaceDeactivate();
            if (FAILED(result))
                return result;
        }
        // A null site deactivates the view but keeps the former site, because hosts call UIActivate after it.
        if (site) {
            document->m_bNegotiatedWnd = FALSE; // not obtained from the client site
            if (site != document->m_spInPlaceSite)
                document->m_spInPlaceSite = site;
        }
        return S_OK;
    }

    STDMETHOD(GetInPlaceSite)(IOleInPlaceSite** site) override
    {
        if (!site)
            return E_FAIL;
        *site = static_cast<T*>(this)->m_spInPlaceSite;
        if (*site)
            (*site)->AddRef();
        return S_OK;
    }

    STDMETHOD(GetDocument)(IUnknown** document) override
    {
        if (!document)
            return E_FAIL;
        *document = static_cast<T*>(this)->GetUnknown();
        (*document)->AddRef();
        return S_OK;
    }

    STDMETHOD(SetRect)(RECT* rect) override
    {
        if (quill::detail::setting_rect.exchange(true))
            return S_OK;
        const ATL::CComPtr<IUnknown> keep_alive(static_cast<T*>(this)->GetUnknown());
        static_cast<T*>(this)->SetObjectRects(rect, rect);
        quill::detail::setting_rect = false;
        return S_OK;
    }

    STDMETHOD(GetRect)(RECT* rect) override
    {
        if (!rect)
            return E_POINTER;
        *rect = static_cast<T*>(this)->m_rcPos;
        return S_OK;
    }

    STDMETHOD(SetRectComplex)(RECT*, RECT*, RECT*, RECT*) override { return S_OK; }

    STDMETHOD(Show)(BOOL show) override
    {
        T* const document = static_cast<T*>(this);
        const ATL::CComPtr<IUnknown> keep_alive(document->GetUnknown());
        if (show)
            return document->m_bUIActive ? S_OK : document->InPlaceActivate(OLEIVERB_INPLACEACTIVATE);
        const HRESULT result = UIActivate(FALSE);
        if (document->m_hWnd)
            ShowWindow(document->m_hWnd, SW_HIDE);
        return result;
    }

    STDMETHOD(UIActivate)(BOOL activate) override
    {
        T* const document = static_cast<T*>(this);
        const ATL::CComPtr<IUnknown> keep_alive(document->GetUnknown());
        if (!activate)
            return document->UIDeactivate();
        if (!document->m_spInPlaceSite)
            return E_UNEXPECTED;
        return document->m_bUIActive ? S_OK : document->InPlaceActivate(OLEIVERB_UIACTIVATE);
    }

    STDMETHOD(Open)() override { return S_OK; }

    STDMETHOD(CloseView)(DWORD) override
    {
        const ATL::CComPtr<IUnknown> keep_alive(static_cast<T*>(this)->GetUnknown());
        Show(FALSE);
        SetInPlaceSite(nullptr);
        return S_OK;
    }

    STDMETHOD(SaveViewState)(IStream*) override { return S_OK; }
    STDMETHOD(ApplyViewState)(IStream*) override { return S_OK; }

    STDMETHOD(Clone)(IOleInPlaceSite*, IOleDocumentView** view) override
    {
        // Returns S_OK without a clone, so the out parameter must be null.
        if (view)
            *view = nullptr;
        return S_OK;
    }
};
