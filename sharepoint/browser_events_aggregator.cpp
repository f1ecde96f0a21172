#include "sharepoint/browser_events_aggregator.h"

#include "logging/log_stream.h"
#include "sharepoint/decisions/links.h"
#include "sharepoint/editor/pdf_editor.h"
#include "sharepoint/host/html_reading.h"
#include "sharepoint/page_analysis.h"

#include <atlutil.h>

#include <utility>

namespace quill {

std::uint64_t system_tick_count()
{
    return GetTickCount64();
}

browser_events_aggregator::browser_events_aggregator(std::uint64_t (*tick_count)())
    : tick_count_(tick_count), editor_(std::make_shared<pdf_editor>()), repeats_(tick_count())
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

    if (repeats_.is_repeat(url, tick_count_())) {
        QUILL_LOG(log_level::info) << url << " just canceled";
    } else {
        QUILL_LOG(log_level::info) << "trying to open pdf link";
        open(url);
    }
    // Opening may have taken longer than the repeat interval: read the clock again.
    repeats_.cancelled(url, tick_count_());
    return true;
}

void browser_events_aggregator::open(std::wstring_view url)
{
    // Opening may dispatch messages: the repeat can arrive before it returns.
    const std::size_t outer = repeats_.openings();
    repeats_.begin_opening(url);
    repeats_.cancelled(url, tick_count_());
    try {
        editor_->open(parse_url(url));
    } catch (...) {
        repeats_.end_openings(outer);
        repeats_.forget_url(url); // the navigation is not cancelled, so the next one is no repeat
        throw;
    }
    repeats_.end_openings(outer);
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
    // An index: the comparison calls into the page, whose ready-state event may append a record.
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
        // The page may have fired its ready-state event, and been recorded, while the sink was being advised.
        known = find_record(document);
        if (!known) {
            document_record& added = *documents_.emplace_back(std::move(record));
            QUILL_LOG(log_level::debug) << added.url() << " is new document";
            return added;
        }
    }
    QUILL_LOG(log_level::debug) << "document already exists";
    return *known;
}

} // namespace quill
