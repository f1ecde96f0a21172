#include "stand_ins/browser/browser_site.h"

namespace quill {

void browser_site::attach(HWND window, IOleInPlaceObject* control)
{
    window_ = window;
    control_ = control;
}

STDMETHODIMP browser_site::GetMoniker(DWORD, DWORD, IMoniker** moniker)
{
    if (moniker == nullptr)
        return E_POINTER;
    *moniker = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP browser_site::GetContainer(IOleContainer** container)
{
    if (container == nullptr)
        return E_POINTER;
    *container = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP browser_site::GetWindow(HWND* window)
{
    if (window == nullptr)
        return E_POINTER;
    *window = window_;
    return window_ != nullptr ? S_OK : E_FAIL;
}

STDMETHODIMP browser_site::GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document,
                                            LPRECT position, LPRECT clip, LPOLEINPLACEFRAMEINFO info)
{
    if (frame == nullptr || document == nullptr || position == nullptr || clip == nullptr || info == nullptr)
        return E_POINTER;
    AddRef();
    *frame = this;
    *document = nullptr;
    GetClientRect(window_, position);
    *clip = *position;
    info->fMDIApp = FALSE;
    info->hwndFrame = GetAncestor(window_, GA_ROOT);
    info->haccel = nullptr;
    info->cAccelEntries = 0;
    return S_OK;
}

STDMETHODIMP browser_site::OnPosRectChange(LPCRECT position)
{
    if (position == nullptr)
        return E_POINTER;
    return control_ != nullptr ? control_->SetObjectRects(position, position) : S_OK;
}

STDMETHODIMP browser_site::GetBorder(LPRECT border)
{
    if (border == nullptr)
        return E_POINTER;
    *border = {};
    return INPLACE_E_NOTOOLSPACE;
}

} // namespace quill
