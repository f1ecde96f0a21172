#include "sharepoint/page_analysis.h"

#include "logging/log_stream.h"
#include "sharepoint/decisions/case_insensitive.h"
#include "sharepoint/decisions/links.h"
#include "sharepoint/host/html_reading.h"

#include <optional>
#include <utility>
#include <vector>

namespace quill {
namespace {

class meta_element
{
public:
    explicit meta_element(IHTMLMetaElement* element) : element_(element) {}
    text_property name() const { return {element_, &IHTMLMetaElement::get_name}; }
    text_property content() const { return {element_, &IHTMLMetaElement::get_content}; }

private:
    IHTMLMetaElement* element_;
};

host_ptr<IHTMLElement> root_of(IHTMLDocument3* document)
{
    host_ptr<IHTMLElement> root;
    if (!document || FAILED(call_host(document, &IHTMLDocument3::get_documentElement, root.out())))
        return {};
    return root;
}

bool is_head(IHTMLElement* element)
{
    return equal_ignoring_case(text_property(element, &IHTMLElement::get_tagName), L"head");
}

// The document's first head. Tries the root's first child before a search by tag name, for which an engine
// visits every element of the page.
host_ptr<IHTMLElement> head_of(IHTMLDocument3* document, IHTMLElement* root)
{
    if (const auto children = children_of(root))
        if (auto first = query<IHTMLElement>(element_at(children, 0)); first && is_head(first))
            return first;
    const auto heads = elements_by_tag(document, L"head");
    if (element_count(heads) < 1)
        return {};
    return query<IHTMLElement>(element_at(heads, 0));
}

// The markup that replaces the link; std::nullopt if the link stays.
std::optional<std::wstring> new_markup(IHTMLElement* link, const CComBSTR& href)
{
    if (!is_pdf_link(attribute_value(link, href).text()))
        return std::nullopt;
    return without_open_handlers(text_property(link, &IHTMLElement::get_outerHTML));
}

void replace(IHTMLElement* link, const std::wstring& markup)
{
    call_host(link, &IHTMLElement::put_outerHTML, CComBSTR(static_cast<int>(markup.size()), markup.data()));
}

std::vector<host_ptr<IHTMLElement>> elements_from(IHTMLElementCollection* elements, long index, long count)
{
    std::vector<host_ptr<IHTMLElement>> found;
    for (; index < count; ++index)
        if (auto element = query<IHTMLElement>(element_at(elements, index)))
            found.push_back(std::move(element));
    return found;
}

} // namespace

page_kind classify_page(IHTMLDocument3* document)
{
    const auto root = root_of(document);
    if (!root)
        return page_kind::regular;
    const auto head = head_of(document, root);
    if (!head)
        return page_kind::regular;

    const page_kind kind = decide_page_kind(
        [&](auto test) {
            return any_element<IHTMLScriptElement>(
                elements_by_tag(head, L"script"), [&](IHTMLScriptElement* script) {
                    return test(text_property(script, &IHTMLScriptElement::get_src));
                });
        },
        [&](auto test) {
            return any_element<IHTMLMetaElement>(elements_by_tag(head, L"meta"), [&](IHTMLMetaElement* meta) {
                return test(meta_element(meta));
            });
        });
    barrier::throw_if_handled();
    if (kind == page_kind::sharepoint)
        QUILL_LOG(log_level::info) << "sharepoint document has been detected";
    return kind;
}

// The engine's collections are live and put_outerHTML replaces elements, so the remaining links are copied
// before the first one is replaced. Most pages have none to replace and need no copy.
void remove_open_handlers(IHTMLDocument3* document)
{
    const CComBSTR href(L"href");
    const auto links = elements_by_tag(document, L"a");
    const long count = element_count(links);
    for (long index = 0; index < count; ++index) {
        const auto link = query<IHTMLElement>(element_at(links, index));
        const auto markup = link ? new_markup(link, href) : std::nullopt;
        if (!markup)
            continue;
        const auto remaining = elements_from(links, index + 1, count);
        replace(link, *markup);
        for (const auto& other : remaining)
            if (const auto other_markup = new_markup(other, href))
                replace(other, *other_markup);
        return;
    }
}

} // namespace quill
