#include "sharepoint/events/browser_events_sink.h"

#include "logging/exception_barriers.h"
#include "logging/log_stream.h"
#include "platform/bstr_view.h"
#include "sharepoint/events/event_connection.h"
#include "sharepoint/host/com_error.h"
#include "sharepoint/host/html_reading.h"

#include <string_view>
#include <utility>

namespace quill {
namespace {

// Parts of the log lines of the barriers.
constexpr unsigned before_navigate_line = 70;
constexpr unsigned document_complete_line = 92;

// The browser passes form data as a VARIANT that refers to another one. It is not dereferenced: such a
// navigation counts as one without form data.
bool has_post_data(const VARIANT* post_data)
{
    constexpr VARTYPE type_mask = 0xFFF;
    if (!post_data)
        return false;
    const VARTYPE type = post_data->vt & type_mask;
    return type != VT_EMPTY && type != VT_VARIANT;
}

bool is_top_level(IWebBrowser2* browser)
{
    VARIANT_BOOL top_level = VARIANT_FALSE;
    return SUCCEEDED(call_host(browser, &IWebBrowser2::get_TopLevelContainer, &top_level)) &&
           top_level != VARIANT_FALSE;
}

} // namespace

CComPtr<browser_events_sink::object>
browser_events_sink::connect(IWebBrowser2* browser, std::weak_ptr<browser_events_handler> handler)
{
    object* created = nullptr;
    throw_if_failed(object::CreateInstance(&created), "Browser events sink cannot be created");
    CComPtr<object> sink(created);
    sink->handler_ = std::move(handler);
    try {
        throw_if_failed(advise(*sink, browser, IID_browser_events), "Browser events cannot be subscribed");
    } catch (...) {
        // Advise may have connected the sink before it failed.
        sink->disconnect(browser);
        throw;
    }
    return sink;
}

void browser_events_sink::disconnect(IWebBrowser2* browser) noexcept
{
    unadvise(*this, browser, IID_browser_events);
}

void browser_events_connection::connect(std::weak_ptr<browser_events_handler> handler)
{
    if (browser_)
        sink_ = browser_events_sink::connect(browser_, std::move(handler));
}

void browser_events_connection::close() noexcept
{
    if (sink_)
        sink_->disconnect(browser_);
    sink_.Release();
    browser_.release();
}

HRESULT STDMETHODCALLTYPE browser_events_sink::on_before_navigate(IDispatch* pDisp, VARIANT* url, VARIANT*,
                                                                  VARIANT*, VARIANT* postData, VARIANT*,
                                                                  VARIANT_BOOL* cancel)
{
    if (!pDisp || !url || !cancel)
        return S_OK;
    protection held = protect();
    return CrashBorder(
        held, [&] { return before_navigate(held, pDisp, *url, postData, *cancel); }, E_FAIL,
        "quill::browser_events_sink::on_before_navigate", before_navigate_line);
}

HRESULT STDMETHODCALLTYPE browser_events_sink::on_document_complete(IDispatch* pDisp, VARIANT* url)
{
    if (!pDisp || !url)
        return S_OK;
    protection held = protect();
    return CrashBorder(
        held, [&] { return document_complete(held, pDisp, *url); }, E_FAIL,
        "quill::browser_events_sink::on_document_complete", document_complete_line);
}

void STDMETHODCALLTYPE browser_events_sink::on_quit()
{
    QUILL_LOG(log_level::info) << "on_quit";
    const std::lock_guard guard(forwarding_);
    handler_.reset();
}

void browser_events_sink::protection::release() noexcept
{
    if (handler)
        handler->end_openings(openings);
    handler.reset();
    if (forwarding.owns_lock())
        forwarding.unlock();
    browser.release();
    sink.Release();
}

void browser_events_sink::lock_handler(protection& held)
{
    held.forwarding.lock();
    held.handler = handler_.lock();
    if (held.handler)
        held.openings = held.handler->openings();
}

HRESULT browser_events_sink::before_navigate(protection& held, IDispatch* frame, const VARIANT& url,
                                             const VARIANT* post_data, VARIANT_BOOL& cancel)
{
    if (url.vt != VT_BSTR)
        return E_FAIL;
    held.browser = query<IWebBrowser2>(frame);
    IWebBrowser2* const browser = held.browser;
    if (!browser || !html_document_of(browser))
        return S_OK;
    if (cancel == VARIANT_TRUE) {
        call_host(browser, &IWebBrowser2::Stop);
        return S_OK;
    }
    barrier::throw_if_handled();
    const std::wstring_view target = view_of(url.bstrVal);
    QUILL_LOG(log_level::debug) << "on_before_navigate " << target;

    lock_handler(held);
    if (held.handler && held.handler->on_before_navigate(browser, target, has_post_data(post_data))) {
        // The URL is open, even if a Release has faulted since: the browser must not open it too.
        cancel = VARIANT_TRUE;
        QUILL_LOG(log_level::info) << " block navigation to sharepoint PDF!";
        const barrier::separate_calls calls;
        call_host(browser, &IWebBrowser2::Stop);
    }
    return S_OK;
}

HRESULT browser_events_sink::document_complete(protection& held, IDispatch* frame, const VARIANT& url)
{
    if (url.vt != VT_BSTR)
        return E_FAIL;
    held.browser = query<IWebBrowser2>(frame);
    IWebBrowser2* const browser = held.browser;
    if (!browser || !html_document_of(browser) || !is_top_level(browser))
        return S_OK;
    barrier::throw_if_handled();
    const std::wstring_view target = view_of(url.bstrVal);
    QUILL_LOG(log_level::debug) << "on_document_complete " << target;

    lock_handler(held);
    if (held.handler)
        held.handler->on_document_complete(browser, target);
    return S_OK;
}

} // namespace quill
