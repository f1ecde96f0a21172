// What the events of a tab's browser are forwarded to.
#pragma once

#include <string_view>

struct IWebBrowser2;

namespace quill {

// Called on the tab's user-interface thread. browser is the browser object of the tab or frame that the
// event is about; it is lent for the call.
class browser_events_handler
{
public:
    // Returns whether the navigation shall be cancelled. May throw.
    virtual bool on_before_navigate(IWebBrowser2* browser, std::wstring_view url, bool is_post) = 0;
    // The tab's page is complete. May throw.
    virtual void on_document_complete(IWebBrowser2* browser, std::wstring_view url) = 0;
    virtual ~browser_events_handler() = default;
};

} // namespace quill
