#include "sharepoint/host/html_reading.h"

#include "platform/bstr_view.h"

#include <atlcomcli.h>

namespace quill {

host_ptr<IHTMLDocument2> html_document_of(IWebBrowser2* browser)
{
    host_ptr<IDispatch> document;
    if (FAILED(call_host(browser, &IWebBrowser2::get_Document, document.out())))
        return {};
    return query<IHTMLDocument2>(document);
}

host_ptr<IHTMLElementCollection> elements_by_tag(IHTMLDocument3* document, const wchar_t* tag)
{
    host_ptr<IHTMLElementCollection> elements;
    if (!document ||
        FAILED(call_host(document, &IHTMLDocument3::getElementsByTagName, CComBSTR(tag), elements.out())))
        return {};
    return elements;
}

host_ptr<IHTMLElementCollection> elements_by_tag(IHTMLElement* parent, const wchar_t* tag)
{
    host_ptr<IHTMLElementCollection> elements;
    if (const auto element = query<IHTMLElement2>(parent);
        element &&
        SUCCEEDED(call_host(element, &IHTMLElement2::getElementsByTagName, CComBSTR(tag), elements.out())) &&
        elements)
        return elements;

    host_ptr<IDispatch> all;
    if (!parent || FAILED(call_host(parent, &IHTMLElement::get_all, all.out())))
        return {};
    host_ptr<IDispatch> tagged;
    auto descendants = query<IHTMLElementCollection>(all);
    if (!descendants ||
        FAILED(call_host(descendants, &IHTMLElementCollection::tags, CComVariant(tag), tagged.out())) ||
        !tagged)
        return descendants;
    return query<IHTMLElementCollection>(tagged);
}

host_ptr<IHTMLElementCollection> children_of(IHTMLElement* parent)
{
    host_ptr<IDispatch> children;
    if (FAILED(call_host(parent, &IHTMLElement::get_children, children.out())))
        return {};
    return query<IHTMLElementCollection>(children);
}

long element_count(IHTMLElementCollection* elements)
{
    long count = 0;
    return elements && SUCCEEDED(call_host(elements, &IHTMLElementCollection::get_length, &count)) ? count
                                                                                                   : 0;
}

host_ptr<IDispatch> element_at(IHTMLElementCollection* elements, long index)
{
    host_ptr<IDispatch> element;
    if (FAILED(call_host(elements, &IHTMLElementCollection::item, CComVariant(index), CComVariant(0),
                         element.out())))
        return {};
    return element;
}

attribute_value::attribute_value(IHTMLElement* element, const CComBSTR& name)
{
    if (FAILED(call_host(element, &IHTMLElement::getAttribute, name, 0, &value_)) || value_.vt == VT_BSTR)
        return;
    VARIANT other = value_;
    value_.vt = VT_EMPTY;
    if (other.vt == VT_DISPATCH || other.vt == VT_UNKNOWN)
        barrier::release_host(other.punkVal);
    else
        barrier::call_host(
            [&] { return VariantClear(&other); }); // may release the host's objects in an array
}

std::wstring_view attribute_value::text() const
{
    return value_.vt == VT_BSTR ? view_of(value_.bstrVal) : std::wstring_view();
}

} // namespace quill
