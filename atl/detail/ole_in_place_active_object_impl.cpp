#include "atl/detail/ole_in_place_active_object_impl.h"

namespace ATL {

HRESULT offer_accelerator_to_site(IOleClientSite* site, LPMSG message) noexcept
{
    const CComQIPtr<IOleControlSite> control_site(site);
    if (!control_site)
        return S_FALSE;
    // KEYMODIFIERS.
    constexpr DWORD shift = 1, control = 2, alt = 4;
    const auto down = [](int key, DWORD bit) -> DWORD { return GetKeyState(key) < 0 ? bit : 0; };
    const DWORD modifiers = down(VK_SHIFT, shift) | down(VK_CONTROL, control) | down(VK_MENU, alt);
    MSG copy = *message;
    return control_site->TranslateAccelerator(&copy, modifiers) == S_OK ? S_OK : S_FALSE;
}

} // namespace ATL
