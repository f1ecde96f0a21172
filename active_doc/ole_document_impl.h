// IOleDocument for a control that is an ActiveX document with one view: the document is its own view.
#pragma once

#include <windows.h>

#include <atlcom.h>
#include <docobj.h>

template <class T>
class ATL_NO_VTABLE IOleDocumentImpl : public IOleDocument
{
public:
    STDMETHOD(CreateView)(IOleInPlaceSite* site, IStream* stream, DWORD, IOleDocumentView** view) override
    {
        if (!view)
            return E_POINTER;
        T* const document = static_cast<T*>(this);
        // There is one view only. The value is left alone: a host whose ActivateMe comes twice (the window
        // getting the focus asks for it) passes the place where it keeps the view that it has, and would
        // lose it.
        if (document->m_spInPlaceSite)
            return E_FAIL;
        *view = nullptr;

        IOleDocumentView* const own_view = document;
        own_view->AddRef();
        if (site)
            own_view->SetInPlaceSite(site);
        if (stream)
            own_view->ApplyViewState(stream);
        *view = own_view;
        return S_OK;
    }

    STDMETHOD(GetDocMiscStatus)(DWORD* status) override
    {
        if (!status)
            return E_POINTER;
        *status = DOCMISC_NOFILESUPPORT;
        return S_OK;
    }

    STDMETHOD(EnumViews)(IEnumOleDocumentViews** enumerator, IOleDocumentView** view) override
    {
        if (enumerator)
            *enumerator = nullptr;
        if (!view)
            return E_POINTER;
        *view = static_cast<T*>(this);
        (*view)->AddRef();
        return S_OK;
    }
};
