// IOleDocument for a control that is an ActiveX document with one view: the document is its own view.
#pragma once

#include <windows.h>

#include <docobj.h>

template <class T>
class ATL_NO_VTABLE IOleDocumentImpl : public IOleDocument
{
public:
    STDMETHOD(CreateView)(IOleInPlaceSite* site, IStream* stream, DWORD, IOleDocumentView** view) override
    {
        if (!view)
            return E_POINTER;
        *view = nullptr;
        T* const document = static_cast<T*>(this);
        if (document->m_spInPlaceSite)
            return E_FAIL; // there is one view only

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
