// The class identifier of the SharePoint helper object and its registry script.
#pragma once

#include <windows.h>

namespace quill {

inline constexpr CLSID CLSID_SharepointBrowserHelperObject = {
    0x8D41F0B2, 0x6C7A, 0x4E93, {0xB5, 0xD8, 0x2A, 0x0F, 0x19, 0xC6, 0xE4, 0xD7}};

// Resource identifier of module/sharepoint.rgs.
inline constexpr UINT sharepoint_registry_script = 102;

} // namespace quill
