// Component categories that mingw-w64's headers do not define.
#pragma once

#include <windows.h>

#include <comcat.h>

namespace quill {

// Controls that are compatible with the browser's AppContainer sandbox.
inline constexpr CATID CATID_AppContainerCompatible = {
    0x59FB2056, 0xD625, 0x48D0, {0xA9, 0x44, 0x1A, 0x85, 0xB5, 0xAB, 0x26, 0x40}};

} // namespace quill
