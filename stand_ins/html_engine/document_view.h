// The page as an ActiveX document with itself as its only view. The view's site is the control's in-place
// site.
#pragma once

#include <windows.h>

#include <atlctl.h>
#include <docobj.h>

namespace quill {

template <class T>
class ATL_NO_VTABLE document_with_view : public IOleDocument, public IOleDocumentView
{
public:
    // IOleDocument
    STDMETHODIMP CreateView(IOleInPlaceSite* site, IStream*, DWORD, IOleDocumentView** view) override
    {
        if (view == nullptr)
            return E_POINTER;
        *view = nullptr;
        if (self()->m_spInPlaceSite)
            return E_FAIL;
        if (site != nullptr)
            SetInPlaceSite(site);
        *view = this;
        self()->AddRef();
        return S_OK;
    }
    STDMETHODIMP GetDocMiscStatus(DWORD* status) override
    {
        if (status == nullptr)
            return E_POINTER;
        *status = DOCMISC_NOFILESUPPORT;
        return S_OK;
    }
    STDMETHODIMP EnumViews(IEnumOleDocumentViews** views, IOleDocumentView** view) override
    {
        if (view == nullptr)
            return E_POINTER;
        if (views != nullptr)
            *views = nullptr;
        *view = this;
        self()->AddRef();
        return S_OK;
    }

    // IOleDocumentView
    STDMETHODIMP SetInPlaceSite(IOleInPlaceSite* site) override
    {
        T* const page = self();
        const CComPtr<IOleInPlaceSite> wanted(site);
        const CComPtr<IOleInPlaceSite> held = page->m_spInPlaceSite;
        if (held && held.p != wanted.p)
            page->InPlaceDeactivate();
        page->m_bNegotiatedWnd = 0;
        page->m_spInPlaceSite = wanted;
        return S_OK;
    }
    STDMETHODIMP GetInPlaceSite(IOleInPlaceSite** site) override
    {
        return self()->m_spInPlaceSite.CopyTo(site);
    }
    STDMETHODIMP GetDocument(IUnknown** document) override
    {
        if (document == nullptr)
            return E_POINTER;
        *document = self()->GetUnknown();
        (*document)->AddRef();
        return S_OK;
    }
    STDMETHODIMP SetRect(LPRECT place) override { return self()->SetObjectRects(place, place); }
    STDMETHODIMP GetRect(LPRECT place) override
    {
        if (place == nullptr)
            return E_POINTER;
        *place = self()->m_rcPos;
        return S_OK;
    }
    STDMETHODIMP SetRectComplex(LPRECT, LPRECT, LPRECT, LPRECT) override { return E_NOTIMPL; }
    STDMETHODIMP Show(BOOL show) override
    {
        T* const page = self();
        if (show)
            return page->InPlaceActivate(OLEIVERB_INPLACEACTIVATE);
        const HRESULT hr = page->UIDeactivate();
        if (page->m_hWnd != nullptr)
            ::ShowWindow(page->m_hWnd, SW_HIDE);
        return hr;
    }
    STDMETHODIMP UIActivate(BOOL activate) override
    {
        T* const page = self();
        if (!activate)
            return page->UIDeactivate();
        return page->m_spInPlaceSite ? page->InPlaceActivate(OLEIVERB_UIACTIVATE) : E_UNEXPECTED;
    }
    STDMETHODIMP Open() override { return E_NOTIMPL; }
    STDMETHODIMP CloseView(DWORD) override
    {
        Show(FALSE);
        return SetInPlaceSite(nullptr);
    }
    STDMETHODIMP SaveViewState(LPSTREAM) override { return E_NOTIMPL; }
    STDMETHODIMP ApplyViewState(LPSTREAM) override { return E_NOTIMPL; }
    STDMETHODIMP Clone(IOleInPlaceSite*, IOleDocumentView** view) override
    {
        if (view == nullptr)
            return E_POINTER;
        *view = nullptr;
        return E_NOTIMPL;
    }

protected:
    ~document_with_view() = default;

private:
    T* self() { return static_cast<T*>(this); }
};

} // namespace quill
