// The COM object of an element. Keeps its node alive, also after the node is removed from the page.
#pragma once

#include "stand_ins/html_engine/counted_object.h"
#include "stand_ins/html_engine/html_interfaces.h"
#include "stand_ins/html_engine/page_model.h"

#include <memory>

namespace quill {

class ATL_NO_VTABLE element_object : public counted_object<&live_objects::elements>,
                                     public html_element_interface,
                                     public html_element2_interface
{
public:
    BEGIN_COM_MAP(element_object)
    COM_INTERFACE_ENTRY(IHTMLElement)
    COM_INTERFACE_ENTRY2(IDispatch, IHTMLElement)
    COM_INTERFACE_ENTRY(IHTMLElement2)
    END_COM_MAP()

    void attach(std::shared_ptr<page_model> page, dom_node::pointer node);
    void FinalRelease();
    const dom_node::pointer& node() const { return node_; }

    // IHTMLElement
    STDMETHODIMP setAttribute(BSTR name, VARIANT value, LONG flags) override;
    STDMETHODIMP getAttribute(BSTR name, LONG flags, VARIANT* value) override;
    STDMETHODIMP removeAttribute(BSTR name, LONG flags, VARIANT_BOOL* removed) override;
    STDMETHODIMP put_className(BSTR value) override { return put_attribute_text(L"class", value); }
    STDMETHODIMP get_className(BSTR* value) override { return get_attribute_text(L"class", value); }
    STDMETHODIMP put_id(BSTR value) override { return put_attribute_text(L"id", value); }
    STDMETHODIMP get_id(BSTR* value) override { return get_attribute_text(L"id", value); }
    STDMETHODIMP put_title(BSTR value) override { return put_attribute_text(L"title", value); }
    STDMETHODIMP get_title(BSTR* value) override { return get_attribute_text(L"title", value); }
    STDMETHODIMP put_lang(BSTR value) override { return put_attribute_text(L"lang", value); }
    STDMETHODIMP get_lang(BSTR* value) override { return get_attribute_text(L"lang", value); }
    STDMETHODIMP get_tagName(BSTR* name) override;
    STDMETHODIMP get_parentElement(IHTMLElement** parent) override;
    STDMETHODIMP get_document(IDispatch** document) override;
    STDMETHODIMP contains(IHTMLElement* child, VARIANT_BOOL* result) override;
    STDMETHODIMP get_sourceIndex(LONG* index) override;
    STDMETHODIMP put_innerHTML(BSTR html) override;
    STDMETHODIMP get_innerHTML(BSTR* html) override;
    STDMETHODIMP put_innerText(BSTR text) override;
    STDMETHODIMP get_innerText(BSTR* text) override;
    STDMETHODIMP put_outerHTML(BSTR html) override;
    STDMETHODIMP get_outerHTML(BSTR* html) override;
    STDMETHODIMP get_outerText(BSTR* text) override { return get_innerText(text); }
    STDMETHODIMP click() override;
    STDMETHODIMP get_children(IDispatch** children) override;
    STDMETHODIMP get_all(IDispatch** all) override;

    // IHTMLElement2
    STDMETHODIMP getElementsByTagName(BSTR name, IHTMLElementCollection** elements) override;

protected:
    // Properties that reflect an attribute; null BSTR if it is missing.
    HRESULT get_attribute_text(const wchar_t* attribute, BSTR* value) const;
    HRESULT put_attribute_text(const wchar_t* attribute, BSTR value);
    // As get_attribute_text, as an absolute URL.
    HRESULT get_attribute_url(const wchar_t* attribute, BSTR* value) const;

private:
    std::shared_ptr<page_model> page_;
    dom_node::pointer node_;
};

// Returns the object of a node; the caller owns the reference. For a null node returns S_OK and null, as the
// engine does.
HRESULT get_element(const std::shared_ptr<page_model>& page, const dom_node::pointer& node,
                    IHTMLElement** element);

} // namespace quill
