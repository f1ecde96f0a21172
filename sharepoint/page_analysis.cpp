#include "sharepoint/page_analysis.h"

#include "logging/log_stream.h"
#include "sharepoint/html_reading.h"
#include "sharepoint/link_rewriting.h"
#include "sharepoint/pdf_link.h"

namespace quill {
namespace {

class meta_element
{
public:
    explicit meta_element(IHTMLMetaElement* element) : element_(element) {}
    std::wstring name() const { return read_text(element_, &IHTMLMetaElement::get_name); }
    std::wstring content() const { return read_text(element_, &IHTMLMetaElement::get_content); }

private:
    IHTMLMetaElement* element_;
};

bool has_root_element(IHTMLDocument3* document)
{
    CComPtr<IHTMLElement> root;
    return document && SUCCEEDED(document->get_documentElement(&root)) && root;
}

CComPtr<IHTMLElement> head_of(IHTMLDocument3* document)
{
    const CComPtr<IHTMLElementCollection> heads = elements_by_tag(document, L"head");
    if (element_count(heads) < 1)
        return nullptr;
    return CComQIPtr<IHTMLElement>(element_at(heads, 0));
}

// Rewriting replaces elements, and the engine's collections follow the document as it changes: the elements
// are all taken before the first is touched.
std::vector<CComPtr<IHTMLElement>> links_of(IHTMLDocument3* document)
{
    std::vector<CComPtr<IHTMLElement>> links;
    any_element<IHTMLElement>(elements_by_tag(document, L"a"), [&](IHTMLElement* link) {
        links.emplace_back(link);
        return false;
    });
    return links;
}

} // namespace

page_kind classify_page(IHTMLDocument3* document)
{
    if (!has_root_element(document))
        return page_kind::regular;
    const CComPtr<IHTMLElement> head = head_of(document);
    if (!head)
        return page_kind::regular;

    const page_kind kind = decide_page_kind(
        [&](auto test) {
            return any_element<IHTMLScriptElement>(
                elements_by_tag(head, L"script"), [&](IHTMLScriptElement* script) {
                    return test(read_text(script, &IHTMLScriptElement::get_src));
                });
        },
        [&](auto test) {
            return any_element<IHTMLMetaElement>(elements_by_tag(head, L"meta"), [&](IHTMLMetaElement* meta) {
                return test(meta_element(meta));
            });
        });
    if (kind == page_kind::sharepoint)
        log_stream(log_level::info) << "sharepoint document has been detected";
    return kind;
}

void remove_open_handlers(IHTMLDocument3* document)
{
    for (const CComPtr<IHTMLElement>& link : links_of(document)) {
        if (!is_pdf_link(read_attribute(link, L"href")))
            continue;
        const auto rewritten = without_open_handlers(read_text(link.p, &IHTMLElement::get_outerHTML));
        if (rewritten)
            link->put_outerHTML(CComBSTR(static_cast<int>(rewritten->size()), rewritten->data()));
    }
}

} // namespace quill
