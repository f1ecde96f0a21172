// Draws the status pane.
#pragma once

#include <windows.h>

#include <cstdint>

namespace quill {

// Draws the pane into target, through a bitmap so that it does not flicker. client: the pane's client
// rectangle; damaged: the part that needs drawing; percent: 0 to 100; text: what stands beside the bar.
// User-interface thread; keeps no object.
void PaintStatusPane(HDC target, const RECT& client, const RECT& damaged, std::uint32_t percent,
                     const wchar_t* text) noexcept;

} // namespace quill
