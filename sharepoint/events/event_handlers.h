// Interfaces through which the event sinks forward events. The aggregator of a tab implements both; all calls
// are made on the tab's UI thread, and pointers are borrowed for the call.
#pragma once

#include <cstddef>
#include <string_view>

struct IHTMLDocument2;
struct IHTMLElement;
struct IWebBrowser2;

namespace quill {

// The browser's events. browser is the browser object of the tab or frame that fired the event.
class browser_events_handler
{
public:
    // Returns whether to cancel the navigation. May throw.
    virtual bool on_before_navigate(IWebBrowser2* browser, std::wstring_view url, bool is_post) = 0;
    // The tab's top-level page is complete. May throw.
    virtual void on_document_complete(IWebBrowser2* browser, std::wstring_view url) = 0;
    virtual ~browser_events_handler() = default;

    // How many URLs are being opened now. The caller of on_before_navigate asks before the call, and passes
    // the number to end_openings after it: a system exception may have skipped what the call itself does at
    // its end.
    virtual std::size_t openings() const noexcept { return 0; }
    virtual void end_openings(std::size_t) noexcept {}
};

// The events of an HTML document.
class html_events_handler
{
public:
    // Returns whether to cancel the click. element may be null. May throw.
    virtual bool on_click(IHTMLDocument2* document, IHTMLElement* element) = 0;
    // The document has reached the ready state "complete". May throw.
    virtual void on_document_ready(IHTMLDocument2* document) = 0;
    virtual ~html_events_handler() = default;
};

} // namespace quill
