// A tab's event machinery: what decides, and the sink that listens to the tab's browser.
#pragma once

#include "sharepoint/browser_events_sink.h"

#include <memory>

namespace quill {

class browser_events_aggregator;

class browser_subscription
{
public:
    // Listens to the browser's events; a null browser makes a subscription that hears nothing. Throws
    // std::system_error with the failure code when the browser takes no connection.
    explicit browser_subscription(IWebBrowser2* browser);
    ~browser_subscription();
    browser_subscription(const browser_subscription&) = delete;
    browser_subscription& operator=(const browser_subscription&) = delete;

private:
    std::shared_ptr<browser_events_aggregator> aggregator_;
    CComPtr<IWebBrowser2> browser_;
    CComPtr<browser_events_sink::object> sink_;
};

} // namespace quill
