// Base classes for the HTML interfaces: every method returns E_NOTIMPL unless a class overrides it, and
// IDispatch uses the engine's registered type library.
#pragma once

#include "stand_ins/html_engine/identifiers.h"

#include <windows.h>

#include <atlbase.h>
#include <atlcom.h>
#include <docobj.h>
#include <exdisp.h>
#include <mshtml.h>
#include <ocidl.h>
#include <unimplemented_interfaces.h>

namespace quill {

// `Methods` is without_Interface<Interface>.
template <class Interface, class Methods>
class html_interface : public Methods
{
public:
    STDMETHODIMP GetTypeInfoCount(UINT* count) override
    {
        if (count == nullptr)
            return E_POINTER;
        *count = 1;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** out) override
    {
        return types().GetTypeInfo(index, locale, out);
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override
    {
        return types().GetIDsOfNames(names, count, locale, ids);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID locale, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO* exception, UINT* bad_argument) override
    {
        return types().Invoke(static_cast<Interface*>(this), id, locale, flags, parameters, result, exception,
                              bad_argument);
    }

private:
    static CComTypeInfoHolder& types()
    {
        static constinit CComTypeInfoHolder holder(&__uuidof(Interface), &LIBID_html_engine, 4, 0);
        return holder;
    }
};

using html_document2_interface = html_interface<IHTMLDocument2, without_IHTMLDocument2<IHTMLDocument2>>;
using html_document3_interface = html_interface<IHTMLDocument3, without_IHTMLDocument3<IHTMLDocument3>>;
using html_element_interface = html_interface<IHTMLElement, without_IHTMLElement<IHTMLElement>>;
using html_element2_interface = html_interface<IHTMLElement2, without_IHTMLElement2<IHTMLElement2>>;
using html_collection_interface =
    html_interface<IHTMLElementCollection, without_IHTMLElementCollection<IHTMLElementCollection>>;
using html_script_interface =
    html_interface<IHTMLScriptElement, without_IHTMLScriptElement<IHTMLScriptElement>>;
using html_meta_interface = html_interface<IHTMLMetaElement, without_IHTMLMetaElement<IHTMLMetaElement>>;
using html_anchor_interface =
    html_interface<IHTMLAnchorElement, without_IHTMLAnchorElement<IHTMLAnchorElement>>;
using html_event_interface = html_interface<IHTMLEventObj, without_IHTMLEventObj<IHTMLEventObj>>;

} // namespace quill
