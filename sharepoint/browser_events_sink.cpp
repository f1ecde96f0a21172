#include "sharepoint/browser_events_sink.h"

#include "logging/exception_barriers.h"
#include "logging/log_stream.h"
#include "sharepoint/com_error.h"
#include "sharepoint/html_reading.h"

#include <mutex>
#include <string_view>
#include <utility>

namespace quill {
namespace {

// Where the barriers say that a failure happened: fixed numbers of the log's text.
constexpr unsigned before_navigate_line = 70;
constexpr unsigned document_complete_line = 92;

std::wstring_view text_of(BSTR text)
{
    return {text ? text : L"", SysStringLen(text)};
}

// The browser passes the data of a form as a reference to another variant, which is not looked into: such a
// navigation counts as one without data.
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
    return SUCCEEDED(browser->get_TopLevelContainer(&top_level)) && top_level != VARIANT_FALSE;
}

} // namespace

CComPtr<browser_events_sink::object>
browser_events_sink::connect(IWebBrowser2* browser, std::weak_ptr<browser_events_handler> handler)
{
    object* created = nullptr;
    throw_if_failed(object::CreateInstance(&created), "Browser events sink cannot be created");
    CComPtr<object> sink(created);
    sink->handler_ = std::move(handler);
    throw_if_failed(sink->DispEventAdvise(browser), "Browser events cannot be subscribed");
    return sink;
}

void browser_events_sink::disconnect(IWebBrowser2* browser) noexcept
{
    NoThrow([&] { return DispEventUnadvise(browser); }, E_FAIL);
}

HRESULT STDMETHODCALLTYPE browser_events_sink::on_before_navigate(IDispatch* pDisp, VARIANT* url, VARIANT*,
                                                                  VARIANT*, VARIANT* postData, VARIANT*,
                                                                  VARIANT_BOOL* cancel)
{
    if (!pDisp || !url || !cancel)
        return S_OK;
    return CrashBorder([&] { return before_navigate(pDisp, *url, postData, *cancel); }, E_FAIL,
                       "quill::browser_events_sink::on_before_navigate", before_navigate_line);
}

HRESULT STDMETHODCALLTYPE browser_events_sink::on_document_complete(IDispatch* pDisp, VARIANT* url)
{
    if (!pDisp || !url)
        return S_OK;
    return CrashBorder([&] { return document_complete(pDisp, *url); }, E_FAIL,
                       "quill::browser_events_sink::on_document_complete", document_complete_line);
}

void STDMETHODCALLTYPE browser_events_sink::on_quit()
{
    QUILL_LOG(log_level::info) << "on_quit";
    const std::lock_guard guard(forwarding_);
    handler_.reset();
}

HRESULT browser_events_sink::before_navigate(IDispatch* frame, const VARIANT& url, const VARIANT* post_data,
                                             VARIANT_BOOL& cancel)
{
    if (url.vt != VT_BSTR)
        return E_FAIL;
    const CComQIPtr<IWebBrowser2> browser(frame);
    if (!browser || !html_document_of(browser))
        return S_OK;
    if (cancel == VARIANT_TRUE) {
        browser->Stop();
        return S_OK;
    }
    const std::wstring_view address = text_of(url.bstrVal);
    QUILL_LOG(log_level::debug) << "on_before_navigate " << address;

    // The handler may close the tab, which takes this sink along.
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    const std::lock_guard guard(forwarding_);
    const auto handler = handler_.lock();
    if (handler && handler->on_before_navigate(browser, address, has_post_data(post_data))) {
        QUILL_LOG(log_level::info) << " block navigation to sharepoint PDF!";
        cancel = VARIANT_TRUE;
        browser->Stop();
    }
    return S_OK;
}

HRESULT browser_events_sink::document_complete(IDispatch* frame, const VARIANT& url)
{
    if (url.vt != VT_BSTR)
        return E_FAIL;
    const CComQIPtr<IWebBrowser2> browser(frame);
    if (!browser || !html_document_of(browser) || !is_top_level(browser))
        return S_OK;
    const std::wstring_view address = text_of(url.bstrVal);
    QUILL_LOG(log_level::debug) << "on_document_complete " << address;

    const CComPtr<IUnknown> keep_alive(GetUnknown());
    const std::lock_guard guard(forwarding_);
    if (const auto handler = handler_.lock())
        handler->on_document_complete(browser, address);
    return S_OK;
}

} // namespace quill
