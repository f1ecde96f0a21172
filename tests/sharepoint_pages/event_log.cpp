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

bool tells_an_address(DISPID id)
{
    return id == DISPID_BEFORENAVIGATE2 || id == DISPID_NAVIGATECOMPLETE2 || id == DISPID_DOCUMENTCOMPLETE ||
           id == DISPID_NAVIGATEERROR;
}

} // namespace

event_diary::~event_diary()
{
    unadvise();
    EXPECT_EQ(references_, 0u) << "somebody still holds the diary";
}

void event_diary::advise(IUnknown* browser)
{
    const CComQIPtr<IConnectionPointContainer> container(browser);
    ASSERT_TRUE(container);
    ASSERT_EQ(container->FindConnectionPoint(DIID_DWebBrowserEvents2, &point_), S_OK);
    EXPECT_EQ(point_->Advise(this, &cookie_), S_OK);
}

void event_diary::unadvise()
{
    if (point_)
        EXPECT_EQ(point_->Unadvise(cookie_), S_OK);
    point_.Release();
}

std::vector<std::string> event_diary::lines() const
{
    std::vector<std::string> lines;
    for (const entry& one : entries_)
        lines.push_back(std::to_string(one.id) + " " + to_utf8(one.address) +
                        (one.cancelled ? " cancelled" : ""));
    return lines;
}

std::size_t event_diary::count(DISPID id, const std::wstring& address) const
{
    return static_cast<std::size_t>(std::count_if(entries_.begin(), entries_.end(), [&](const entry& one) {
        return one.id == id && one.address == address;
    }));
}

STDMETHODIMP event_diary::QueryInterface(REFIID iid, void** out)
{
    *out = nullptr;
    if (iid != IID_IUnknown && iid != IID_IDispatch && iid != DIID_DWebBrowserEvents2)
        return E_NOINTERFACE;
    *out = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP event_diary::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT*,
                                 EXCEPINFO*, UINT*)
{
    EXPECT_EQ(flags, DISPATCH_METHOD);
    if (!tells_an_address(id) && id != DISPID_ONQUIT)
        return S_OK;
    entry made;
    made.id = id;
    made.at = seconds_now();
    if (tells_an_address(id) && parameters->cArgs >= 2) {
        // The address is the second argument of each of them, counted from the end.
        const VARIANT& address = parameters->rgvarg[parameters->cArgs - 2];
        if (address.vt == (VT_BYREF | VT_VARIANT) && address.pvarVal->vt == VT_BSTR)
            made.address = address.pvarVal->bstrVal;
    }
    if (id == DISPID_BEFORENAVIGATE2) {
        const VARIANT& cancel = parameters->rgvarg[0];
        made.cancelled = cancel.vt == (VT_BYREF | VT_BOOL) && *cancel.pboolVal != VARIANT_FALSE;
    }
    entries_.push_back(std::move(made));
    return S_OK;
}

} // namespace quill::test
