#include "tests/support/viewer/viewer_ole_object.h"

#include <gtest/gtest.h>
#include <olectl.h>

#include <utility>

namespace quill::test {
namespace {

constexpr DWORD status_bits = OLEMISC_RECOMPOSEONRESIZE | OLEMISC_INSIDEOUT | OLEMISC_ACTIVATEWHENVISIBLE;

template <class Interface>
HRESULT not_offered(Interface** out)
{
    if (out)
        *out = nullptr;
    return E_NOTIMPL;
}

} // namespace

viewer_ole_object::~viewer_ole_object()
{
    EXPECT_EQ(site_, nullptr) << "the host never took the viewer's site away";
    EXPECT_EQ(in_place_site_, nullptr) << "the host never deactivated the viewer";
    InPlaceDeactivate();
    SetClientSite(nullptr);
}

IUnknown* viewer_ole_object::find(REFIID iid)
{
    if (IsEqualIID(iid, IID_IOleObject))
        return static_cast<IOleObject*>(this);
    if (IsEqualIID(iid, IID_IOleInPlaceObject) || IsEqualIID(iid, IID_IOleWindow))
        return static_cast<IOleInPlaceObject*>(this);
    return nullptr;
}

STDMETHODIMP viewer_ole_object::SetClientSite(IOleClientSite* site)
{
    if (site)
        site->AddRef();
    if (IOleClientSite* const old = std::exchange(site_, site))
        old->Release();
    return S_OK;
}

STDMETHODIMP viewer_ole_object::GetClientSite(IOleClientSite** out)
{
    if (!out)
        return E_POINTER;
    *out = site_;
    if (site_)
        site_->AddRef();
    return S_OK;
}

STDMETHODIMP viewer_ole_object::Close(DWORD)
{
    return InPlaceDeactivate();
}

STDMETHODIMP viewer_ole_object::GetMoniker(DWORD, DWORD, IMoniker** out)
{
    return not_offered(out);
}

STDMETHODIMP viewer_ole_object::GetClipboardData(DWORD, IDataObject** out)
{
    return not_offered(out);
}

STDMETHODIMP viewer_ole_object::DoVerb(LONG verb, LPMSG, IOleClientSite*, LONG, HWND, LPCRECT position)
{
    if (verb == OLEIVERB_HIDE)
        return InPlaceDeactivate();
    return activate(position ? *position : RECT{0, 0, 10, 10});
}

STDMETHODIMP viewer_ole_object::EnumVerbs(IEnumOLEVERB** out)
{
    return not_offered(out);
}

STDMETHODIMP viewer_ole_object::GetUserClassID(CLSID* out)
{
    if (!out)
        return E_POINTER;
    *out = CLSID_NULL;
    return S_OK;
}

STDMETHODIMP viewer_ole_object::GetUserType(DWORD, LPOLESTR* out)
{
    return not_offered(out);
}

STDMETHODIMP viewer_ole_object::SetExtent(DWORD, SIZEL* size)
{
    if (!size)
        return E_POINTER;
    extent_ = *size;
    return S_OK;
}

STDMETHODIMP viewer_ole_object::GetExtent(DWORD, SIZEL* size)
{
    if (!size)
        return E_POINTER;
    *size = extent_;
    return S_OK;
}

STDMETHODIMP viewer_ole_object::Advise(IAdviseSink*, DWORD* connection)
{
    if (connection)
        *connection = 0;
    return OLE_E_ADVISENOTSUPPORTED;
}

STDMETHODIMP viewer_ole_object::EnumAdvise(IEnumSTATDATA** out)
{
    return not_offered(out);
}

STDMETHODIMP viewer_ole_object::GetMiscStatus(DWORD, DWORD* status)
{
    if (!status)
        return E_POINTER;
    *status = status_bits;
    return S_OK;
}

HRESULT viewer_ole_object::activate(const RECT& position)
{
    if (window_)
        return S_OK;
    if (!site_)
        return E_UNEXPECTED;
    IOleInPlaceSite* in_place = nullptr;
    if (FAILED(site_->QueryInterface(IID_PPV_ARGS(&in_place))) || !in_place)
        return E_FAIL;
    HWND parent = nullptr;
    if (in_place->CanInPlaceActivate() != S_OK || FAILED(in_place->GetWindow(&parent)) || !parent) {
        in_place->Release();
        return E_FAIL;
    }
    in_place_site_ = in_place;
    in_place->OnInPlaceActivate();
    window_ = CreateWindowExW(0, L"STATIC", L"viewer", WS_CHILD | WS_VISIBLE, position.left, position.top,
                              position.right - position.left, position.bottom - position.top, parent, nullptr,
                              GetModuleHandleW(nullptr), nullptr);
    return window_ ? S_OK : E_FAIL;
}

STDMETHODIMP viewer_ole_object::GetWindow(HWND* out)
{
    if (!out)
        return E_POINTER;
    *out = window_;
    return window_ ? S_OK : E_FAIL;
}

STDMETHODIMP viewer_ole_object::InPlaceDeactivate()
{
    if (const HWND window = std::exchange(window_, nullptr))
        DestroyWindow(window);
    if (IOleInPlaceSite* const old = std::exchange(in_place_site_, nullptr)) {
        old->OnInPlaceDeactivate();
        old->Release();
    }
    return S_OK;
}

STDMETHODIMP viewer_ole_object::SetObjectRects(LPCRECT position, LPCRECT)
{
    if (!position)
        return E_POINTER;
    if (window_)
        MoveWindow(window_, position->left, position->top, position->right - position->left,
                   position->bottom - position->top, TRUE);
    return S_OK;
}

} // namespace quill::test
