#include "sharepoint/html_reading.h"

#include <atlcomcli.h>

namespace quill {

CComPtr<IHTMLDocument2> html_document_of(IWebBrowser2* browser)
{
    CComPtr<IDispatch> document;
    if (FAILED(browser->get_Document(&document)))
        return nullptr;
    return CComQIPtr<IHTMLDocument2>(document);
}

CComPtr<IHTMLElementCollection> elements_by_tag(IHTMLDocument3* document, const wchar_t* tag)
{
    CComPtr<IHTMLElementCollection> elements;
    if (!document || FAILED(document->getElementsByTagName(CComBSTR(tag), &elements)))
        return nullptr;
    return elements;
}

CComPtr<IHTMLElementCollection> elements_by_tag(IHTMLElement* parent, const wchar_t* tag)
{
    CComPtr<IHTMLElementCollection> elements;
    if (const CComQIPtr<IHTMLElement2> element(parent);
        element && SUCCEEDED(element->getElementsByTagName(CComBSTR(tag), &elements)) && elements)
        return elements;

    CComPtr<IDispatch> all;
    if (!parent || FAILED(parent->get_all(&all)))
        return nullptr;
    CComPtr<IDispatch> tagged;
    CComQIPtr<IHTMLElementCollection> descendants(all);
    if (!descendants || FAILED(descendants->tags(CComVariant(tag), &tagged)) || !tagged)
        return descendants;
    return CComQIPtr<IHTMLElementCollection>(tagged);
}

CComPtr<IHTMLElementCollection> children_of(IHTMLElement* parent)
{
    CComPtr<IDispatch> children;
    if (FAILED(parent->get_children(&children)))
        return nullptr;
    return CComQIPtr<IHTMLElementCollection>(children);
}

long element_count(IHTMLElementCollection* elements)
{
    long count = 0;
    return elements && SUCCEEDED(elements->get_length(&count)) ? count : 0;
}

CComPtr<IDispatch> element_at(IHTMLElementCollection* elements, long index)
{
    CComPtr<IDispatch> element;
    if (FAILED(elements->item(CComVariant(index), CComVariant(0), &element)))
        return nullptr;
    return element;
}

attribute_value::attribute_value(IHTMLElement* element, const CComBSTR& name)
{
    if (FAILED(element->getAttribute(name, 0, &value_)))
        value_.Clear();
}

std::wstring_view attribute_value::text() const
{
    if (value_.vt != VT_BSTR || !value_.bstrVal)
        return {};
    return {value_.bstrVal, SysStringLen(value_.bstrVal)};
}

} // namespace quill
