// IOleDocument for a control that is an ActiveX document with a single view: the object is its own view.
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
        // There is only one view. *view is left unchanged: if a host's ActivateMe is re-entered, as when the
        // window gets the focus, it passes the variable that contains its view.
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
