#include "sharepoint/browser_subscription.h"

#include "sharepoint/browser_events_aggregator.h"

#include <utility>

namespace quill {

browser_subscription::browser_subscription(host_ptr<IWebBrowser2> browser)
    : aggregator_(std::make_shared<browser_events_aggregator>()), browser_(std::move(browser))
{
}

void browser_subscription::connect()
{
    if (browser_)
        sink_ = browser_events_sink::connect(browser_, aggregator_->weak_from_this());
}

void browser_subscription::close() noexcept
{
    if (sink_)
        sink_->disconnect(browser_);
    sink_.Release();
    browser_.release();
    aggregator_.reset();
}

} // namespace quill
