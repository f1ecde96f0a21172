#include "sharepoint/document_record.h"

#include "logging/log_stream.h"
#include "sharepoint/decisions/links.h"
#include "sharepoint/editor/pdf_editor.h"
#include "sharepoint/host/host_call.h"
#include "sharepoint/host/html_reading.h"
#include "sharepoint/page_analysis.h"

#include <atlutil.h>

#include <new>
#include <utility>

namespace quill {
namespace {

// The href of a list link to a PDF; empty for any other element.
std::wstring list_link(IHTMLElement* element)
{
    if (!is_link_tag(text_property(element, &IHTMLElement::get_tagName)) ||
        !is_list_link_markup(text_property(element, &IHTMLElement::get_outerHTML)))
        return {};
    const attribute_value link(element, L"href");
    return std::wstring(is_pdf_link(link.text()) ? link.text() : std::wstring_view());
}

// The page's URL, to complete server-relative links; empty if the page has none. Throws std::bad_alloc, since
// without memory the link would be opened without its server.
std::wstring base_url(IHTMLDocument2* page)
{
    CComBSTR url;
    const HRESULT result = call_host(page, &IHTMLDocument2::get_URL, &url);
    if (result == E_OUTOFMEMORY)
        throw std::bad_alloc();
    if (FAILED(result) || !url)
        return {};
    return {url.m_str, url.Length()};
}

} // namespace

document_record::document_record(IHTMLDocument2* document, std::weak_ptr<pdf_editor> editor,
                                 std::weak_ptr<html_events_handler> handler)
    : document_(document), document3_(query<IHTMLDocument3>(document)), kind_(classify_page(document3_)),
      editor_(std::move(editor)), events_(document, std::move(handler))
{
    QUILL_LOG(log_level::info) << url() << " events subscribed ";
}

std::wstring document_record::url() const
{
    return std::wstring(text_property(document_, &IHTMLDocument2::get_URL).text());
}

void document_record::rewrite_links() const
{
    if (kind_ != page_kind::sharepoint) {
        QUILL_LOG(log_level::debug) << "Should not modify links on regular documents";
        return;
    }
    remove_open_handlers(document3_);
}

bool document_record::click(IHTMLElement* element) const
{
    if (kind_ != page_kind::sharepoint) {
        QUILL_LOG(log_level::debug) << "do not block clicks for regular documents";
        return false;
    }
    const auto editor = editor_.lock();
    if (!editor) {
        QUILL_LOG(log_level::warning) << "click handler is missing";
        return false;
    }
    const std::wstring link = list_link(element);
    if (link.empty()) {
        QUILL_LOG(log_level::info) << "do not block clicks for not-pdf links";
        return false;
    }
    const bool needs_server = link.starts_with(L'/');
    editor->open(parse_url(needs_server ? absolute_link(link, base_url(document_)) : link));
    return true;
}

} // namespace quill
