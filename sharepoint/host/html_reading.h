// Reads pages through the HTML engine's interfaces. A failure is returned as a null pointer or empty text,
// because events arrive in every state of loading and pages may be malformed.
#pragma once

#include "sharepoint/host/host_ptr.h"

#include <atlbase.h>
#include <exdisp.h>
#include <mshtml.h>

#include <string_view>
#include <type_traits>

namespace quill {

// The document of a tab or frame; null if it is not an HTML document.
host_ptr<IHTMLDocument2> html_document_of(IWebBrowser2* browser);

// The elements with a tag name in document order, of a document or inside an element. With an engine that
// cannot filter inside an element, the result holds all elements below it: the caller must check their type.
host_ptr<IHTMLElementCollection> elements_by_tag(IHTMLDocument3* document, const wchar_t* tag);
host_ptr<IHTMLElementCollection> elements_by_tag(IHTMLElement* parent, const wchar_t* tag);

host_ptr<IHTMLElementCollection> children_of(IHTMLElement* parent);

// 0 for a null collection.
long element_count(IHTMLElementCollection* elements);
// Null if there is no element at the index.
host_ptr<IDispatch> element_at(IHTMLElementCollection* elements, long index);

// Whether test returns true for one of the elements that have the interface Element; stops at the first.
template <class Element, class Test>
bool any_element(IHTMLElementCollection* elements, Test&& test)
{
    const long count = element_count(elements);
    for (long index = 0; index < count; ++index) {
        const auto element = query<Element>(element_at(elements, index));
        if (element && test(element.get()))
            return true;
    }
    return false;
}

// The value of a text property: text_property(script, &IHTMLScriptElement::get_src).
class text_property
{
public:
    template <class Object>
    text_property(std::type_identity_t<Object>* object, HRESULT (STDMETHODCALLTYPE Object::*getter)(BSTR*))
    {
        if (object && FAILED(call_host(object, getter, &text_)))
            text_.Empty();
    }
    text_property(const text_property&) = delete;
    text_property& operator=(const text_property&) = delete;

    // Valid as long as this object.
    std::wstring_view text() const { return {text_.m_str ? text_.m_str : L"", text_.Length()}; }
    operator std::wstring_view() const { return text(); }

private:
    CComBSTR text_;
};

// The value of an element's attribute: attribute_value(link, CComBSTR(L"href")).
class attribute_value
{
public:
    attribute_value(IHTMLElement* element, const CComBSTR& name);
    attribute_value(const attribute_value&) = delete;
    attribute_value& operator=(const attribute_value&) = delete;

    // Valid as long as this object; empty for a value that is not text.
    std::wstring_view text() const;

private:
    CComVariant value_;
};

} // namespace quill
