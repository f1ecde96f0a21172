// Where the parts of the status pane lie, in pixels. Plain functions.
#pragma once

#include <windows.h>

#include <array>
#include <cstdint>

namespace quill {

inline constexpr SIZE status_pane_size{350, 45};

// The pane's place in a parent with a client area of that size; negative in a small one.
POINT StatusPanePosition(SIZE parent_client) noexcept;

// The bar's white ground, the bar itself (percent: 0 to 100) and the text's area in the pane's client
// rectangle.
RECT StatusBarFrame(const RECT& client) noexcept;
RECT StatusBar(const RECT& client, std::uint32_t percent) noexcept;
RECT StatusTextArea(const RECT& client) noexcept;

// Room for the pane's text or its format, terminator included.
using status_text = std::array<wchar_t, 256>;

// The pane's text. format: holds one integer conversion, for the percentage; what does not fit is cut off.
status_text FormatStatusText(const wchar_t* format, std::uint32_t percent) noexcept;

} // namespace quill
