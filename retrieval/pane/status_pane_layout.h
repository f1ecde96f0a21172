// What the status pane shows, and where, in pixels. Plain code.
#pragma once

#include <windows.h>

#include <array>
#include <cstdint>

namespace quill {

inline constexpr SIZE status_pane_size{350, 45};

// The pane's position in a parent whose client area has that size; negative if the parent is too small.
POINT status_pane_position(SIZE parent_client) noexcept;

// Areas within the pane's client rectangle. percent: 0 to 100.
RECT status_bar_frame(const RECT& client) noexcept;
RECT status_bar(const RECT& client, std::uint32_t percent) noexcept;
RECT status_text_area(const RECT& client) noexcept;

// A buffer for the pane's text and its format, terminator included.
using status_text = std::array<wchar_t, 256>;

// format contains one integer conversion, for the percentage. The result is truncated to the buffer.
status_text format_status_text(const wchar_t* format, std::uint32_t percent) noexcept;

// The percentage of a download, truncated to whole hundredths of the maximum; 0 if the maximum is unknown or
// below 100.
constexpr std::uint32_t download_percent(std::uint32_t progress, std::uint32_t progress_max) noexcept
{
    const std::uint32_t hundredth = progress_max / 100;
    return hundredth == 0 ? 0 : progress / hundredth;
}

} // namespace quill
