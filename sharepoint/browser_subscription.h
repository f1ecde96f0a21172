// A tab's event machinery: what decides, and the sink that listens to the tab's browser.
#pragma once

#include "sharepoint/events/browser_events_sink.h"
#include "sharepoint/host/host_ptr.h"

#include <memory>

namespace quill {

class browser_events_aggregator;

class browser_subscription
{
public:
    // Calls nothing of the browser, which may be null.
    explicit browser_subscription(host_ptr<IWebBrowser2> browser);
    ~browser_subscription() { close(); }
    browser_subscription(const browser_subscription&) = delete;
    browser_subscription& operator=(const browser_subscription&) = delete;

    // Advises the sink on the browser's events; without a browser there are none. Throws std::system_error
    // with the failure code when the browser takes no connection.
    void connect();
    // Ends everything. A call that was cut off by a system exception may be repeated: it goes on behind the
    // call into the host that it was cut off in.
    void close() noexcept;

private:
    std::shared_ptr<browser_events_aggregator> aggregator_;
    host_ptr<IWebBrowser2> browser_;
    CComPtr<browser_events_sink::object> sink_;
};

} // namespace quill
