// The brain of one browser tab: remembers the tab's documents and decides which navigations and clicks go
// to the desktop editor instead.
#pragma once

#include "sharepoint/decisions/repeat_guard.h"
#include "sharepoint/document_record.h"
#include "sharepoint/events/event_handlers.h"

#include <memory>
#include <vector>

namespace quill {

// Always owned by a shared pointer; the event sinks hold weak ones.
class browser_events_aggregator : public browser_events_handler,
                                  public html_events_handler,
                                  public std::enable_shared_from_this<browser_events_aggregator>
{
public:
    browser_events_aggregator();

    // browser_events_handler
    bool on_before_navigate(IWebBrowser2* browser, std::wstring_view url, bool is_post) override;
    void on_document_complete(IWebBrowser2* browser, std::wstring_view url) override;

    // html_events_handler
    bool on_click(IHTMLDocument2* document, IHTMLElement* element) override;
    void on_document_ready(IHTMLDocument2* document) override;

private:
    // Null when there is none. A record stays where it is as long as the aggregator lives.
    document_record* find_record(IHTMLDocument2* document) const;
    document_record& find_or_create_record(IHTMLDocument2* document);
    void open(std::wstring_view url);

    std::shared_ptr<pdf_editor> editor_;
    std::vector<std::unique_ptr<document_record>> documents_;
    repeat_guard repeats_;
};

} // namespace quill
