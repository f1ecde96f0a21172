#include "tests/framework/hosted_control.h"

#include "atl/atlcomcli.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

constexpr DWORD connection_of_advise = 77;
constexpr DWORD cookie_of_sink = 88;

} // namespace

IUnknown* hosted_control::find(REFIID iid)
{
    if (only_dispatch && iid != IID_IUnknown && iid != IID_IDispatch)
        return nullptr;
    // The connection point is a separate object for its callers.
    if (iid == IID_IConnectionPoint || (iid == IID_IPersistStreamInit && !persists))
        return nullptr;
    return test_object::find(iid);
}

HRESULT hosted_control::SetClientSite(IOleClientSite* new_site)
{
    replace(site, new_site);
    return record.note(new_site ? "SetClientSite" : "SetClientSite(NULL)");
}

HRESULT hosted_control::Close(DWORD option)
{
    EXPECT_EQ(option, DWORD{OLECLOSE_NOSAVE});
    const HRESULT hr = record.note("Close");
    if (SUCCEEDED(hr) && window && !stays_active_when_closed)
        InPlaceDeactivate();
    return hr;
}

HRESULT hosted_control::DoVerb(LONG verb, LPMSG message, IOleClientSite* active_site, LONG index, HWND parent,
                               LPCRECT place)
{
    EXPECT_EQ(message, nullptr);
    EXPECT_EQ(index, 0);
    EXPECT_TRUE(IsWindow(parent));
    EXPECT_EQ(active_site, site);
    HRESULT hr = record.note("DoVerb(" + std::to_string(verb) + ")");
    if (FAILED(hr) || !active_site)
        return hr;
    if (!window)
        hr = activate(active_site, *place);
    if (SUCCEEDED(hr) && verb == OLEIVERB_UIACTIVATE) {
        const ATL::CComQIPtr<IOleInPlaceSite> in_place(active_site);
        in_place->OnUIActivate();
    }
    return hr;
}

HRESULT hosted_control::activate(IOleClientSite* active_site, const RECT& place)
{
    const ATL::CComQIPtr<IOleInPlaceSite> in_place(active_site);
    EXPECT_TRUE(in_place);
    HWND parent = nullptr;
    if (!in_place || in_place->CanInPlaceActivate() != S_OK || FAILED(in_place->OnInPlaceActivate()) ||
        FAILED(in_place->GetWindow(&parent)))
        return E_FAIL;
    position = place;
    window = CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE, place.left, place.top,
                             place.right - place.left, place.bottom - place.top, parent, nullptr, nullptr,
                             nullptr);
    return S_OK;
}

HRESULT hosted_control::InPlaceDeactivate()
{
    record.note("InPlaceDeactivate");
    if (!window)
        return S_OK;
    DestroyWindow(std::exchange(window, nullptr));
    if (const ATL::CComQIPtr<IOleInPlaceSite> in_place(site); in_place)
        in_place->OnInPlaceDeactivate();
    return S_OK;
}

HRESULT hosted_control::SetExtent(DWORD aspect, SIZEL* size)
{
    EXPECT_EQ(aspect, DWORD{DVASPECT_CONTENT});
    EXPECT_GT(size->cx, 0);
    return record.note("SetExtent");
}

HRESULT hosted_control::Advise(IAdviseSink* new_sink, DWORD* connection)
{
    const HRESULT hr = record.note("Advise");
    if (SUCCEEDED(hr)) {
        replace(advised, new_sink);
        *connection = connection_of_advise;
    }
    return hr;
}

HRESULT hosted_control::Unadvise(DWORD connection)
{
    if (connection == cookie_of_sink) {
        replace<IUnknown>(sink, nullptr);
        return record.note("Unadvise(sink)");
    }
    EXPECT_EQ(connection, connection_of_advise);
    replace<IAdviseSink>(advised, nullptr);
    return record.note("Unadvise");
}

HRESULT hosted_control::GetMiscStatus(DWORD aspect, DWORD* status)
{
    EXPECT_EQ(aspect, DWORD{DVASPECT_CONTENT});
    const HRESULT hr = record.note("GetMiscStatus");
    *status = misc_status;
    return hr;
}

HRESULT hosted_control::SetObjectRects(LPCRECT new_position, LPCRECT clip)
{
    EXPECT_TRUE(EqualRect(new_position, clip));
    position = *new_position;
    return record.note("SetObjectRects");
}

HRESULT hosted_control::SetAdvise(DWORD aspects, DWORD, IAdviseSink* new_sink)
{
    EXPECT_EQ(aspects, DWORD{DVASPECT_CONTENT});
    replace(view_advised, new_sink);
    return record.note(new_sink ? "SetAdvise" : "SetAdvise(NULL)");
}

HRESULT hosted_control::SetSite(IUnknown* new_site)
{
    replace(object_site, new_site);
    return record.note(new_site ? "SetSite" : "SetSite(NULL)");
}

HRESULT hosted_control::FindConnectionPoint(REFIID iid, IConnectionPoint** point)
{
    *point = nullptr;
    EXPECT_EQ(iid, IID_IPropertyNotifySink);
    const HRESULT hr = record.note("FindConnectionPoint");
    if (SUCCEEDED(hr)) {
        *point = this;
        AddRef();
    }
    return hr;
}

HRESULT hosted_control::Advise(IUnknown* new_sink, DWORD* cookie)
{
    const HRESULT hr = record.note("Advise(sink)");
    if (SUCCEEDED(hr)) {
        replace(sink, new_sink);
        *cookie = cookie_of_sink;
    }
    return hr;
}

bool hosted_control::released() const
{
    return references() == 0 && !window && !site && !object_site && !advised && !view_advised && !sink;
}

hosted_class::hosted_class(std::function<HRESULT(REFIID, void**)> create)
    : create_(std::move(create)),
      progid_key_(HKEY_LOCAL_MACHINE, std::wstring(L"Software\\Classes\\") + hosted_progid + L"\\CLSID")
{
    progid_key_.set_string(nullptr, hosted_clsid_text);
    EXPECT_EQ(
        CoRegisterClassObject(CLSID_hosted, this, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registration_),
        S_OK);
}

hosted_class::~hosted_class()
{
    CoRevokeClassObject(registration_);
}

HRESULT hosted_class::QueryInterface(REFIID iid, void** out)
{
    if (!is_nothing || iid != IID_IClassFactory)
        return test_object::QueryInterface(iid, out);
    *out = nullptr;
    return S_OK;
}

HRESULT hosted_class::CreateInstance(IUnknown* outer, REFIID iid, void** out)
{
    *out = nullptr;
    if (creates_nothing)
        return S_OK;
    return outer ? CLASS_E_NOAGGREGATION : create_(iid, out);
}

} // namespace quill::test
