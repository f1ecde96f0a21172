// Component categories that the headers at hand do not have.
#pragma once

#include <windows.h>

#include <comcat.h>

namespace quill {

// Objects that may run in the browser's sandbox.
inline constexpr CATID CATID_AppContainerCompatible = {
    0x59FB2056, 0xD625, 0x48D0, {0xA9, 0x44, 0x1A, 0x85, 0xB5, 0xAB, 0x26, 0x40}};

} // namespace quill
