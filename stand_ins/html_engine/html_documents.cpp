#include "stand_ins/html_engine/html_documents.h"

#include "stand_ins/html_engine/collection_object.h"
#include "stand_ins/html_engine/com_results.h"
#include "stand_ins/html_engine/element_object.h"

namespace quill {
namespace {

HRESULT give_elements(const std::shared_ptr<page_model>& page, element_filter filter,
                      IHTMLElementCollection** elements)
{
    return guarded_out(elements, [&] {
        return create_collection(page, page->root(), collection_scope::descendants, std::move(filter),
                                 elements);
    });
}

HRESULT give_text(BSTR* out, std::wstring_view text)
{
    return guarded_out(out, [&] {
        *out = new_bstr(text);
        return S_OK;
    });
}

} // namespace

STDMETHODIMP html_document2::get_all(IHTMLElementCollection** elements)
{
    return give_elements(page(), nullptr, elements);
}

STDMETHODIMP html_document2::get_body(IHTMLElement** element)
{
    return guarded_out(element, [&] { return get_element(page(), page()->body(), element); });
}

STDMETHODIMP html_document2::get_images(IHTMLElementCollection** elements)
{
    return give_elements(page(), with_name(L"img"), elements);
}

STDMETHODIMP html_document2::get_applets(IHTMLElementCollection** elements)
{
    return give_elements(
        page(), [](const dom_node& node) { return node.is(L"applet") || node.is(L"object"); }, elements);
}

STDMETHODIMP html_document2::get_links(IHTMLElementCollection** elements)
{
    return give_elements(
        page(),
        [](const dom_node& node) {
            return (node.is(L"a") || node.is(L"area")) && node.attribute(L"href").has_value();
        },
        elements);
}

STDMETHODIMP html_document2::get_forms(IHTMLElementCollection** elements)
{
    return give_elements(page(), with_name(L"form"), elements);
}

STDMETHODIMP html_document2::get_anchors(IHTMLElementCollection** elements)
{
    return give_elements(
        page(),
        [](const dom_node& node) {
            return node.is(L"a") && (node.attribute(L"name") || node.attribute(L"id"));
        },
        elements);
}

STDMETHODIMP html_document2::get_scripts(IHTMLElementCollection** elements)
{
    return give_elements(page(), with_name(L"script"), elements);
}

STDMETHODIMP html_document2::get_embeds(IHTMLElementCollection** elements)
{
    return give_elements(page(), with_name(L"embed"), elements);
}

STDMETHODIMP html_document2::get_title(BSTR* title)
{
    return give_text(title, page()->title());
}

STDMETHODIMP html_document2::get_readyState(BSTR* state)
{
    return give_text(state, text_of(page()->state));
}

STDMETHODIMP html_document2::get_URL(BSTR* url)
{
    return give_text(url, page()->url);
}

STDMETHODIMP html_document3::get_documentElement(IHTMLElement** element)
{
    return guarded_out(element, [&] { return get_element(page(), page()->document_element(), element); });
}

STDMETHODIMP html_document3::getElementsByName(BSTR name, IHTMLElementCollection** elements)
{
    return guarded([&] {
        return give_elements(
            page(),
            [wanted = std::wstring(view_of(name))](const dom_node& node) {
                return node.attribute(L"name") == wanted || node.attribute(L"id") == wanted;
            },
            elements);
    });
}

STDMETHODIMP html_document3::getElementById(BSTR id, IHTMLElement** element)
{
    return guarded_out(element, [&] {
        const std::wstring wanted(view_of(id));
        dom_node::pointer found;
        visit_elements(*page()->root(), [&](dom_node& node) {
            if (node.attribute(L"id") == wanted)
                found = node.shared_from_this();
            return !found;
        });
        return get_element(page(), found, element);
    });
}

STDMETHODIMP html_document3::getElementsByTagName(BSTR name, IHTMLElementCollection** elements)
{
    return guarded([&] { return give_elements(page(), with_name(view_of(name)), elements); });
}

} // namespace quill
