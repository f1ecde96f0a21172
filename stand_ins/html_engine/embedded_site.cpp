#include "stand_ins/html_engine/embedded_site.h"

namespace quill {

// An embedded object has no moniker of its own; the container's is that of the page.
STDMETHODIMP embedded_site::GetMoniker(DWORD, DWORD which, IMoniker** moniker)
{
    if (moniker == nullptr)
        return E_POINTER;
    *moniker = nullptr;
    if (which != OLEWHICHMK_CONTAINER || host_ == nullptr || host_->page_moniker() == nullptr)
        return E_FAIL;
    *moniker = host_->page_moniker();
    (*moniker)->AddRef();
    return S_OK;
}

STDMETHODIMP embedded_site::GetContainer(IOleContainer** container)
{
    if (container == nullptr)
        return E_POINTER;
    *container = nullptr;
    return host_ != nullptr ? host_->page_object()->QueryInterface(container) : E_NOINTERFACE;
}

STDMETHODIMP embedded_site::GetWindow(HWND* window)
{
    if (window == nullptr)
        return E_POINTER;
    *window = host_ != nullptr ? host_->page_window() : nullptr;
    return *window != nullptr ? S_OK : E_FAIL;
}

STDMETHODIMP embedded_site::OnUIActivate()
{
    if (host_ == nullptr)
        return E_FAIL;
    host_->ui_activated(*this);
    return S_OK;
}

// The frame is that of the page, from the browser.
STDMETHODIMP embedded_site::GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document,
                                             LPRECT position, LPRECT clip, LPOLEINPLACEFRAMEINFO info)
{
    if (frame == nullptr || document == nullptr || position == nullptr || clip == nullptr || info == nullptr)
        return E_POINTER;
    *frame = nullptr;
    *document = nullptr;
    if (host_ == nullptr)
        return E_FAIL;
    if (const CComPtr<IOleInPlaceSite> outer = host_->page_in_place_site()) {
        RECT outer_position{};
        RECT outer_clip{};
        if (FAILED(outer->GetWindowContext(frame, document, &outer_position, &outer_clip, info))) {
            *frame = nullptr;
            *document = nullptr;
        }
    }
    *position = place_;
    *clip = place_;
    return S_OK;
}

STDMETHODIMP embedded_site::QueryService(REFGUID service, REFIID interface_id, void** out)
{
    if (out == nullptr)
        return E_POINTER;
    *out = nullptr;
    const CComPtr<IOleClientSite> outer(host_ != nullptr ? host_->page_client_site() : nullptr);
    const CComQIPtr<IServiceProvider> browser(outer);
    return browser ? browser->QueryService(service, interface_id, out) : E_NOINTERFACE;
}

} // namespace quill
