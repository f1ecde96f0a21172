#include "sharepoint/browser_events_aggregator.h"

#include "logging/log_stream.h"
#include "sharepoint/decisions/links.h"
#include "sharepoint/editor/pdf_editor.h"
#include "sharepoint/host/html_reading.h"
#include "sharepoint/page_analysis.h"

#include <atlutil.h>

#include <utility>

namespace quill {

browser_events_aggregator::browser_events_aggregator()
    : editor_(std::make_shared<pdf_editor>()), repeats_(GetTickCount64())
{
}

bool browser_events_aggregator::on_before_navigate(IWebBrowser2* browser, std::wstring_view url, bool is_post)
{
    const auto document = html_document_of(browser);
    barrier::throw_if_handled();
    if (!document || is_post || !is_pdf_link(url))
        return false;
    const page_kind kind = classify_page(query<IHTMLDocument3>(document));
    barrier::throw_if_handled();
    if (kind != page_kind::sharepoint)
        return false;

    if (repeats_.is_repeat(url, GetTickCount64())) {
        QUILL_LOG(log_level::info) << url << " just canceled";
    } else {
        QUILL_LOG(log_level::info) << "trying to open pdf link";
        open(url);
    }
    // Opening may have taken longer than a repeat is waited for, so the clock is read again.
    repeats_.cancelled(url, GetTickCount64());
    return true;
}

void browser_events_aggregator::open(std::wstring_view url)
{
    // Opening may dispatch messages, and so the repeat.
    std::wstring opening(url);
    repeats_.cancelled(url, GetTickCount64());
    std::wstring outer = repeats_.exchange_opening(std::move(opening));
    try {
        editor_->open(parse_url(url));
    } catch (...) {
        repeats_.exchange_opening(std::move(outer));
        repeats_.forget_url(url); // the navigation is not cancelled: the next one must not pass for a repeat
        throw;
    }
    repeats_.exchange_opening(std::move(outer));
}

void browser_events_aggregator::on_document_complete(IWebBrowser2* browser, std::wstring_view url)
{
    const auto document = html_document_of(browser);
    barrier::throw_if_handled();
    if (!document)
        return;
    QUILL_LOG(log_level::debug) << "opening document by " << url;
    repeats_.forget_url();
    find_or_create_record(document).rewrite_links();
}

bool browser_events_aggregator::on_click(IHTMLDocument2* document, IHTMLElement* element)
{
    const document_record* const record = find_record(document);
    if (!record) {
        QUILL_LOG(log_level::warning) << "click: opened document not found";
        return false;
    }
    QUILL_LOG(log_level::debug) << "click handling...";
    return record->click(element);
}

void browser_events_aggregator::on_document_ready(IHTMLDocument2* document)
{
    find_or_create_record(document).rewrite_links();
}

document_record* browser_events_aggregator::find_record(IHTMLDocument2* document) const
{
    // The comparison calls into the page, which may report its readiness and have a record appended.
    for (std::size_t i = 0; i < documents_.size(); ++i) {
        document_record* const record = documents_[i].get();
        if (record->is_for(document))
            return record;
    }
    return nullptr;
}

document_record& browser_events_aggregator::find_or_create_record(IHTMLDocument2* document)
{
    document_record* known = find_record(document);
    if (!known) {
        auto record = std::make_unique<document_record>(document, editor_, weak_from_this());
        // A page that tells its readiness while it is being connected to has been recorded on the way.
        known = find_record(document);
        if (!known) {
            document_record& added = *documents_.emplace_back(std::move(record));
            QUILL_LOG(log_level::debug) << added.address() << " is new document";
            return added;
        }
    }
    QUILL_LOG(log_level::debug) << "document already exists";
    return *known;
}

} // namespace quill
