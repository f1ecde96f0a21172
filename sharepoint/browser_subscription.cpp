#include "sharepoint/browser_subscription.h"

#include "sharepoint/browser_events_aggregator.h"

#include <utility>

namespace quill {

browser_subscription::browser_subscription(IWebBrowser2* browser)
    : aggregator_(std::make_shared<browser_events_aggregator>()), browser_(browser)
{
    if (browser_)
        sink_ = browser_events_sink::connect(browser_, aggregator_->weak_from_this());
}

browser_subscription::~browser_subscription()
{
    // Ending the connection and releasing the browser call out to it.
    const CComPtr<IWebBrowser2> browser(std::move(browser_));
    const CComPtr<browser_events_sink::object> sink(std::move(sink_));
    if (sink)
        sink->disconnect(browser);
}

} // namespace quill
