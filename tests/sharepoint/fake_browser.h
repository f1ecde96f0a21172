// A fake browser object of a tab or frame, with a connection point for the browser's events.
#pragma once

#include "tests/sharepoint/fake_connection_point.h"
#include "tests/sharepoint/fake_document.h"

#include <string>

namespace quill::test {

// The result of a BeforeNavigate2.
struct navigation_result
{
    HRESULT code = E_UNEXPECTED;
    VARIANT_BOOL cancel = VARIANT_FALSE;
};

class fake_browser : public fake_object<without_IWebBrowser2<IWebBrowser2>,
                                        without_IConnectionPointContainer<IConnectionPointContainer>>
{
public:
    explicit fake_browser(fake_tab& tab);

    CComPtr<IDispatch> document; // null without a page
    bool is_browser = true;      // has IWebBrowser2
    VARIANT_BOOL is_top_level = VARIANT_TRUE;
    int stops = 0;

    fake_connection_point& events() { return *events_; }
    IUnknown* unknown() { return static_cast<IWebBrowser2*>(this); }

    // Fires the events as the browser does, for itself or for one of its frames.
    navigation_result before_navigate(const std::wstring& url, fake_browser* frame = nullptr);
    HRESULT document_complete(const std::wstring& url, fake_browser* frame = nullptr);
    void quit();

    HRESULT STDMETHODCALLTYPE get_Document(IDispatch** out) override;
    HRESULT STDMETHODCALLTYPE get_TopLevelContainer(VARIANT_BOOL* out) override;
    HRESULT STDMETHODCALLTYPE Stop() override;
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** out) override;

protected:
    IUnknown* find_interface(REFIID iid) override;

private:
    CComPtr<fake_connection_point> events_;
};

// The arguments of a BeforeNavigate2; a test may replace each of them before it fires the event.
struct before_navigate_arguments
{
    before_navigate_arguments(IDispatch* frame, const std::wstring& address);
    before_navigate_arguments(const before_navigate_arguments&) = delete;
    before_navigate_arguments& operator=(const before_navigate_arguments&) = delete;

    event_result fire(fake_connection_point& events) const;
    event_result fire_at(IDispatch* sink) const;
    std::vector<VARIANT> packed() const;

    CComVariant url;
    CComVariant flags;
    CComVariant frame_name;
    CComVariant post_data; // referred to by the VARIANT that the browser passes
    CComVariant headers;
    VARIANT_BOOL cancel = VARIANT_FALSE;
    // The event's arguments; by default they refer to the members above.
    VARIANT disp{};
    VARIANT url_argument{};
    VARIANT post_data_reference{}; // VT_BYREF | VT_VARIANT to post_data
    VARIANT post_data_argument{};
    VARIANT cancel_argument{};
};

} // namespace quill::test
