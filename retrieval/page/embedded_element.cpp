#include "retrieval/page/embedded_element.h"

#include "logging/log_stream.h"
#include "platform/bstr_view.h"
#include "retrieval/page/pdf_element.h"
#include "retrieval/url/url_fragment.h"
#include "retrieval/url/url_text.h"

#include <atlbase.h>
#include <mshtml.h>

#include <new>
#include <vector>

namespace quill {
namespace {

// The flag of getAttribute that returns the value as written in the source, as a string.
constexpr LONG attribute_as_text = 2;

enum class finding
{
    pdf,
    not_pdf,
    failed
};

// Whether the call succeeded and returned an interface. After a failure the out parameter is neither used
// nor released.
template <class Interface, class Call>
bool receive(CComPtr<Interface>& received, const Call& call)
{
    Interface* out = nullptr;
    if (FAILED(call(&out)))
        return false;
    received.Attach(out);
    return out != nullptr;
}

template <class Call>
HRESULT receive(CComBSTR& received, const Call& call)
{
    BSTR out = nullptr;
    const HRESULT result = call(&out);
    received.Attach(SUCCEEDED(result) ? out : nullptr);
    return result;
}

// The children of one element and the position of the search among them.
struct level
{
    CComPtr<IHTMLElementCollection> children;
    long length = 0;
    long next = 0;
};

bool open_level(IHTMLElement* element, level& opened)
{
    CComPtr<IDispatch> children;
    if (!receive(children, [&](IDispatch** out) { return element->get_children(out); }))
        return false;
    if (!receive(opened.children,
                 [&](IHTMLElementCollection** out) { return children->QueryInterface(IID_PPV_ARGS(out)); }))
        return false;
    return SUCCEEDED(opened.children->get_length(&opened.length));
}

// False if a call into the page fails.
bool next_child(level& from, CComPtr<IHTMLElement>& child, element_kind& kind)
{
    VARIANT index{};
    index.vt = VT_I4;
    index.lVal = from.next++;
    CComPtr<IDispatch> item;
    if (!receive(item, [&](IDispatch** out) { return from.children->item(index, index, out); }))
        return false;
    if (!receive(child, [&](IHTMLElement** out) { return item->QueryInterface(IID_PPV_ARGS(out)); }))
        return false;
    CComBSTR tag;
    if (FAILED(receive(tag, [&](BSTR* out) { return child->get_tagName(out); })) || !tag)
        return false;
    kind = kind_of_tag(view_of(tag));
    return true;
}

bool get_attribute(IHTMLElement* element, const wchar_t* name, CComVariant& value)
{
    CComBSTR text;
    text.Attach(SysAllocString(name));
    if (!text)
        throw std::bad_alloc();
    VARIANT out{};
    if (FAILED(element->getAttribute(text, attribute_as_text, &out)))
        return false;
    static_cast<VARIANT&>(value) = out;
    return true;
}

finding find_type(IHTMLElement* element)
{
    CComVariant type;
    if (!get_attribute(element, L"TYPE", type))
        return finding::failed;
    if (type.vt == VT_BSTR)
        return is_pdf_type(view_of(type.bstrVal)) ? finding::pdf : finding::not_pdf;
    if (type.vt != VT_NULL && type.vt != VT_EMPTY)
        return finding::not_pdf;
    CComBSTR html;
    if (FAILED(receive(html, [&](BSTR* out) { return element->get_outerHTML(out); })))
        return finding::failed;
    return source_states_pdf_type(view_of(html)) ? finding::pdf : finding::not_pdf;
}

// url receives the reference of any EMBED or OBJECT element, not only of a PDF.
finding examine(const embedded_request& request, IHTMLElement* element, element_kind kind, std::wstring& url)
{
    if (kind == element_kind::other)
        return finding::not_pdf;
    const finding type = find_type(element);
    if (type == finding::failed)
        return finding::failed;
    CComVariant reference;
    if (!get_attribute(element, reference_attribute(kind), reference))
        return finding::failed;
    if (reference.vt == VT_BSTR) {
        url = EncodeUrl(view_of(reference.bstrVal));
        QUILL_LOG(log_level::debug) << "ACTIVEDOC " << request.log_address << " ProcessHTMLBodyElement URL";
    }
    return type == finding::pdf || names_pdf(url) ? finding::pdf : finding::not_pdf;
}

bool find_page(IOleClientSite* site, CComPtr<IHTMLDocument2>& page, CComPtr<IHTMLElement>& body)
{
    CComPtr<IOleContainer> container;
    return site && receive(container, [&](IOleContainer** out) { return site->GetContainer(out); }) &&
           receive(page,
                   [&](IHTMLDocument2** out) { return container->QueryInterface(IID_PPV_ARGS(out)); }) &&
           receive(body, [&](IHTMLElement** out) { return page->get_body(out); });
}

void read_page_url(IHTMLDocument2* page, embedded_request& request)
{
    CComBSTR url;
    // Without a URL there is no page or zoom, but the search continues.
    receive(url, [&](BSTR* out) { return page->get_URL(out); });
    request.page = page_url_number(view_of(url), L"page");
    request.zoom = page_url_number(view_of(url), L"zoom");
}

} // namespace

int ResolveEmbeddedElement(embedded_request& request, std::wstring& url)
{
    url.clear();
    CComPtr<IHTMLDocument2> page;
    CComPtr<IHTMLElement> body;
    if (!find_page(request.site, page, body))
        return 0;
    read_page_url(page, request);
    std::uint32_t counter = 0;
    return ProcessHTMLBodyElement(request, body, url, counter);
}

// Depth first, in document order, without the children of PDF elements. The page controls the nesting depth,
// hence the explicit stack.
int ProcessHTMLBodyElement(const embedded_request& request, IHTMLElement* element, std::wstring& url,
                           std::uint32_t& counter)
{
    url.clear();
    std::vector<level> levels(1);
    if (!element || !open_level(element, levels.back()))
        return 0;
    while (!levels.empty()) {
        if (levels.back().next >= levels.back().length) {
            levels.pop_back();
            continue;
        }
        CComPtr<IHTMLElement> child;
        element_kind kind = element_kind::other;
        if (!next_child(levels.back(), child, kind))
            return 0;
        const finding found = examine(request, child, kind, url);
        if (found == finding::pdf && counter == request.index)
            return 1;
        url.clear();
        if (found == finding::failed)
            return 0;
        if (found == finding::pdf) {
            ++counter;
        } else {
            levels.emplace_back();
            if (!open_level(child, levels.back()))
                return 0;
        }
    }
    return 0;
}

} // namespace quill
