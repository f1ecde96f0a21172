// Elements with an interface in addition to IHTMLElement.
#pragma once

#include "stand_ins/html_engine/element_object.h"

namespace quill {

class ATL_NO_VTABLE script_element : public element_object, public html_script_interface
{
public:
    BEGIN_COM_MAP(script_element)
    COM_INTERFACE_ENTRY(IHTMLElement)
    COM_INTERFACE_ENTRY(IHTMLScriptElement)
    COM_INTERFACE_ENTRY_CHAIN(element_object)
    END_COM_MAP()

    STDMETHODIMP put_src(BSTR value) override { return put_attribute_text(L"src", value); }
    STDMETHODIMP get_src(BSTR* value) override { return get_attribute_text(L"src", value); }
    STDMETHODIMP put_type(BSTR value) override { return put_attribute_text(L"type", value); }
    STDMETHODIMP get_type(BSTR* value) override { return get_attribute_text(L"type", value); }
    STDMETHODIMP get_text(BSTR* value) override;
};

class ATL_NO_VTABLE meta_element : public element_object, public html_meta_interface
{
public:
    BEGIN_COM_MAP(meta_element)
    COM_INTERFACE_ENTRY(IHTMLElement)
    COM_INTERFACE_ENTRY(IHTMLMetaElement)
    COM_INTERFACE_ENTRY_CHAIN(element_object)
    END_COM_MAP()

    STDMETHODIMP put_httpEquiv(BSTR value) override { return put_attribute_text(L"http-equiv", value); }
    STDMETHODIMP get_httpEquiv(BSTR* value) override { return get_attribute_text(L"http-equiv", value); }
    STDMETHODIMP put_content(BSTR value) override { return put_attribute_text(L"content", value); }
    STDMETHODIMP get_content(BSTR* value) override { return get_attribute_text(L"content", value); }
    STDMETHODIMP put_name(BSTR value) override { return put_attribute_text(L"name", value); }
    STDMETHODIMP get_name(BSTR* value) override { return get_attribute_text(L"name", value); }
    STDMETHODIMP put_charset(BSTR value) override { return put_attribute_text(L"charset", value); }
    STDMETHODIMP get_charset(BSTR* value) override { return get_attribute_text(L"charset", value); }
};

class ATL_NO_VTABLE anchor_element : public element_object, public html_anchor_interface
{
public:
    BEGIN_COM_MAP(anchor_element)
    COM_INTERFACE_ENTRY(IHTMLElement)
    COM_INTERFACE_ENTRY(IHTMLAnchorElement)
    COM_INTERFACE_ENTRY_CHAIN(element_object)
    END_COM_MAP()

    STDMETHODIMP put_href(BSTR value) override { return put_attribute_text(L"href", value); }
    STDMETHODIMP get_href(BSTR* value) override { return get_attribute_url(L"href", value); }
    STDMETHODIMP put_target(BSTR value) override { return put_attribute_text(L"target", value); }
    STDMETHODIMP get_target(BSTR* value) override { return get_attribute_text(L"target", value); }
    STDMETHODIMP put_rel(BSTR value) override { return put_attribute_text(L"rel", value); }
    STDMETHODIMP get_rel(BSTR* value) override { return get_attribute_text(L"rel", value); }
    STDMETHODIMP put_name(BSTR value) override { return put_attribute_text(L"name", value); }
    STDMETHODIMP get_name(BSTR* value) override { return get_attribute_text(L"name", value); }
};

} // namespace quill
