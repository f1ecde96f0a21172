// Reading pages through the HTML engine's interfaces. Nothing here fails: pages come in every state of
// loading and repair, so what cannot be had is an empty pointer or empty text.
#pragma once

#include "sharepoint/host/host_ptr.h"

#include <atlbase.h>
#include <exdisp.h>
#include <mshtml.h>

#include <string_view>
#include <type_traits>

namespace quill {

// The page that the browser (a tab or a frame) shows, if it is an HTML page.
host_ptr<IHTMLDocument2> html_document_of(IWebBrowser2* browser);

// The elements of one tag name in document order: all of a document, or those inside an element. An engine
// that cannot search inside an element by name hands out all there are: the caller has to tell them apart.
host_ptr<IHTMLElementCollection> elements_by_tag(IHTMLDocument3* document, const wchar_t* tag);
host_ptr<IHTMLElementCollection> elements_by_tag(IHTMLElement* parent, const wchar_t* tag);

// The elements directly below one, in document order.
host_ptr<IHTMLElementCollection> children_of(IHTMLElement* parent);

// Number of elements, 0 for no collection, and one of them; null when there is none at the index.
long element_count(IHTMLElementCollection* elements);
host_ptr<IDispatch> element_at(IHTMLElementCollection* elements, long index);

// Whether test is true for one of the elements, asked in order; what is not an Element is left out.
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

// A text property: text_property(script, &IHTMLScriptElement::get_src).
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

    // Lives as long as this.
    std::wstring_view text() const { return {text_.m_str ? text_.m_str : L"", text_.Length()}; }
    operator std::wstring_view() const { return text(); }

private:
    CComBSTR text_;
};

// The value of an element's attribute.
class attribute_value
{
public:
    attribute_value(IHTMLElement* element, const CComBSTR& name);
    attribute_value(const attribute_value&) = delete;
    attribute_value& operator=(const attribute_value&) = delete;

    // Lives as long as this; empty for a value that is no text.
    std::wstring_view text() const;

private:
    CComVariant value_;
};

} // namespace quill
