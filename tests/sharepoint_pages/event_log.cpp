#include "tests/sharepoint_pages/event_log.h"

#include "tests/support/text.h"

#include <exdisp.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace quill::test {
namespace {

double seconds_now()
{
    LARGE_INTEGER frequency{};
    LARGE_INTEGER now{};
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&now);
    return static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

bool has_url(DISPID id)
{
    return id == DISPID_BEFORENAVIGATE2 || id == DISPID_NAVIGATECOMPLETE2 || id == DISPID_DOCUMENTCOMPLETE ||
           id == DISPID_NAVIGATEERROR;
}

} // namespace

event_log::~event_log()
{
    unadvise();
    EXPECT_EQ(references_, 0u) << "the log is still referenced";
}

void event_log::advise(IUnknown* browser)
{
    const CComQIPtr<IConnectionPointContainer> container(browser);
    ASSERT_TRUE(container);
    ASSERT_EQ(container->FindConnectionPoint(DIID_DWebBrowserEvents2, &point_), S_OK);
    EXPECT_EQ(point_->Advise(this, &cookie_), S_OK);
}

void event_log::unadvise()
{
    if (point_)
        EXPECT_EQ(point_->Unadvise(cookie_), S_OK);
    point_.Release();
}

std::vector<std::string> event_log::lines() const
{
    std::vector<std::string> lines;
    for (const entry& one : entries_)
        lines.push_back(std::to_string(one.id) + " " + to_utf8(one.url) +
                        (one.cancelled ? " cancelled" : ""));
    return lines;
}

std::size_t event_log::count(DISPID id, const std::wstring& url) const
{
    return static_cast<std::size_t>(std::count_if(
        entries_.begin(), entries_.end(), [&](const entry& one) { return one.id == id && one.url == url; }));
}

STDMETHODIMP event_log::QueryInterface(REFIID iid, void** out)
{
    *out = nullptr;
    if (iid != IID_IUnknown && iid != IID_IDispatch && iid != DIID_DWebBrowserEvents2)
        return E_NOINTERFACE;
    *out = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP event_log::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT*,
                               EXCEPINFO*, UINT*)
{
    EXPECT_EQ(flags, DISPATCH_METHOD);
    if (!has_url(id) && id != DISPID_ONQUIT)
        return S_OK;
    entry made;
    made.id = id;
    made.at = seconds_now();
    if (has_url(id) && parameters->cArgs >= 2) {
        // The URL is the second argument of each of them; arguments are in reverse order.
        const VARIANT& url = parameters->rgvarg[parameters->cArgs - 2];
        if (url.vt == (VT_BYREF | VT_VARIANT) && url.pvarVal->vt == VT_BSTR)
            made.url = url.pvarVal->bstrVal;
    }
    if (id == DISPID_BEFORENAVIGATE2) {
        const VARIANT& cancel = parameters->rgvarg[0];
        made.cancelled = cancel.vt == (VT_BYREF | VT_BOOL) && *cancel.pboolVal != VARIANT_FALSE;
    }
    entries_.push_back(std::move(made));
    return S_OK;
}

} // namespace quill::test
