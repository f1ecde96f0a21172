#include "stand_ins/browser/browser_control.h"

namespace quill {

HRESULT browser_control::open(HWND window, browser_events_owner& owner)
{
    CComObject<browser_site>* site = nullptr;
    CComObject<browser_events>* events = nullptr;
    HRESULT hr = CComObject<browser_site>::CreateInstance(&site);
    if (FAILED(hr))
        return hr;
    site_ = site;
    hr = CComObject<browser_events>::CreateInstance(&events);
    if (FAILED(hr))
        return hr;
    events_ = events;

    CComPtr<IOleObject> object;
    hr = CoCreateInstance(CLSID_WebBrowser, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object));
    if (FAILED(hr))
        return hr;
    CComPtr<IOleInPlaceObject> in_place;
    if (FAILED(hr = object->QueryInterface(IID_PPV_ARGS(&browser_))) ||
        FAILED(hr = object->QueryInterface(IID_PPV_ARGS(&in_place))))
        return hr;
    window_ = window;
    // The site keeps a pointer without a reference, which close() clears.
    site_->attach(window, in_place);
    hr = object->SetClientSite(site_);
    if (FAILED(hr))
        return hr;
    RECT place = {};
    GetClientRect(window, &place);
    hr = object->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, site_, 0, window, &place);
    return FAILED(hr) ? hr : events_->advise(browser_, owner);
}

void browser_control::close()
{
    if (events_)
        events_->unadvise();
    if (browser_) {
        const CComQIPtr<IOleObject> object(browser_);
        const CComQIPtr<IOleInPlaceObject> in_place(browser_);
        if (in_place)
            in_place->InPlaceDeactivate();
        if (object) {
            object->Close(OLECLOSE_NOSAVE);
            object->SetClientSite(nullptr);
        }
    }
    if (site_)
        site_->attach(nullptr, nullptr);
    browser_.Release();
    events_.Release();
    site_.Release();
    window_ = nullptr;
}

HRESULT browser_control::navigate(const std::wstring& address)
{
    if (!browser_)
        return E_UNEXPECTED;
    CComVariant target(address.c_str());
    CComVariant none;
    return browser_->Navigate2(&target, &none, &none, &none, &none);
}

void browser_control::go_back()
{
    if (browser_)
        browser_->GoBack();
}

void browser_control::go_forward()
{
    if (browser_)
        browser_->GoForward();
}

void browser_control::reload()
{
    if (browser_)
        browser_->Refresh();
}

void browser_control::resize()
{
    const CComQIPtr<IOleInPlaceObject> in_place(browser_);
    RECT place = {};
    if (in_place && GetClientRect(window_, &place))
        in_place->SetObjectRects(&place, &place);
}

void browser_control::focus()
{
    const CComQIPtr<IOleObject> object(browser_);
    RECT place = {};
    if (object && GetClientRect(window_, &place))
        object->DoVerb(OLEIVERB_UIACTIVATE, nullptr, site_, 0, window_, &place);
}

bool browser_control::translate_key(MSG& message)
{
    if (message.message < WM_KEYFIRST || message.message > WM_KEYLAST || !IsChild(window_, message.hwnd))
        return false;
    const CComQIPtr<IOleInPlaceActiveObject> active(browser_);
    return active && active->TranslateAccelerator(&message) == S_OK;
}

std::wstring browser_control::address() const
{
    CComBSTR address;
    if (!browser_ || FAILED(browser_->get_LocationURL(&address)) || !address)
        return {};
    return static_cast<const wchar_t*>(address);
}

} // namespace quill
