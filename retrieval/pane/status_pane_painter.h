// Paints the status pane.
#pragma once

#include <windows.h>

#include <cstdint>

namespace quill {

// Paints through a memory bitmap to avoid flicker. client: the pane's client rectangle; damaged: the update
// rectangle; percent: 0 to 100; text: what is shown beside the bar. UI thread only.
void paint_status_pane(HDC target, const RECT& client, const RECT& damaged, std::uint32_t percent,
                       const wchar_t* text) noexcept;

} // namespace quill
