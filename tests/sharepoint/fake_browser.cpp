#include "tests/sharepoint/fake_browser.h"

#include "sharepoint/events/event_identifiers.h"

#include <exdispid.h>
#include <gtest/gtest.h>

namespace quill::test {
namespace {

VARIANT reference_to(const VARIANT& target)
{
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = const_cast<VARIANT*>(&target);
    return reference;
}

VARIANT dispatch_argument(IDispatch* dispatch)
{
    VARIANT argument{};
    argument.vt = VT_DISPATCH;
    argument.pdispVal = dispatch;
    return argument;
}

} // namespace

fake_browser::fake_browser(fake_tab& tab)
    : fake_object(tab), events_(make_fake<fake_connection_point>(tab, IID_browser_events))
{
}

navigation_result fake_browser::before_navigate(const std::wstring& url, fake_browser* frame)
{
    before_navigate_arguments arguments(frame ? frame : this, url);
    const event_result result = arguments.fire(*events_);
    return {result.code, arguments.cancel};
}

HRESULT fake_browser::document_complete(const std::wstring& url, fake_browser* frame)
{
    const CComVariant address(url.c_str());
    const auto results = events_->fire(DISPID_DOCUMENTCOMPLETE,
                                       {reference_to(address), dispatch_argument(frame ? frame : this)});
    EXPECT_EQ(results.size(), 1u);
    return results.empty() ? E_UNEXPECTED : results.front().code;
}

void fake_browser::quit()
{
    EXPECT_EQ(events_->fire(DISPID_ONQUIT, {}).size(), 1u);
}

HRESULT fake_browser::get_Document(IDispatch** out)
{
    if (const auto result = tab().enter("IWebBrowser2::get_Document", out))
        return *result;
    return hand_out(document.p, out);
}

HRESULT fake_browser::get_TopLevelContainer(VARIANT_BOOL* out)
{
    if (const auto result = tab().enter("IWebBrowser2::get_TopLevelContainer", out))
        return *result;
    *out = is_top_level;
    return S_OK;
}

HRESULT fake_browser::Stop()
{
    ++stops;
    if (const auto result = tab().enter("IWebBrowser2::Stop"))
        return *result;
    return S_OK;
}

HRESULT fake_browser::FindConnectionPoint(REFIID iid, IConnectionPoint** out)
{
    if (const auto result = tab().enter("IConnectionPointContainer::FindConnectionPoint", out))
        return *result;
    EXPECT_EQ(iid, IID_browser_events);
    return hand_out(events_.p, out);
}

IUnknown* fake_browser::find_interface(REFIID iid)
{
    if (iid == IID_IUnknown || iid == IID_IDispatch || (is_browser && iid == IID_IWebBrowser2))
        return static_cast<IWebBrowser2*>(this);
    if (iid == IID_IConnectionPointContainer)
        return static_cast<IConnectionPointContainer*>(this);
    return nullptr;
}

before_navigate_arguments::before_navigate_arguments(IDispatch* frame, const std::wstring& address)
    : flags(0), disp(dispatch_argument(frame)), url_argument(reference_to(url)),
      post_data_reference(reference_to(post_data)), post_data_argument(reference_to(post_data_reference))
{
    url.vt = VT_BSTR;
    hand_out(address, &url.bstrVal);
    cancel_argument.vt = VT_BYREF | VT_BOOL;
    cancel_argument.pboolVal = &cancel;
}

std::vector<VARIANT> before_navigate_arguments::packed() const
{
    return {cancel_argument,
            reference_to(headers),
            post_data_argument,
            reference_to(frame_name),
            reference_to(flags),
            url_argument,
            disp};
}

event_result before_navigate_arguments::fire(fake_connection_point& events) const
{
    auto results = events.fire(DISPID_BEFORENAVIGATE2, packed());
    EXPECT_EQ(results.size(), 1u);
    return results.empty() ? event_result{E_UNEXPECTED, {}} : results.front();
}

event_result before_navigate_arguments::fire_at(IDispatch* sink) const
{
    return test::fire_at(sink, DISPID_BEFORENAVIGATE2, packed());
}

} // namespace quill::test
