#include "retrieval/pane/status_pane_layout.h"

#include <cwchar>

namespace quill {

POINT status_pane_position(SIZE parent_client) noexcept
{
    return {(parent_client.cx - status_pane_size.cx) / 2, parent_client.cy / 2 - status_pane_size.cy};
}

RECT status_bar_frame(const RECT& client) noexcept
{
    return status_bar(client, 100);
}

RECT status_bar(const RECT& client, std::uint32_t percent) noexcept
{
    constexpr LONG margin = 10, bottom = 35, pixels_per_percent = 2;
    const LONG left = client.left + margin;
    return {left, client.top + margin, left + pixels_per_percent * static_cast<LONG>(percent),
            client.top + bottom};
}

RECT status_text_area(const RECT& client) noexcept
{
    constexpr LONG left = 210;
    return {left, client.top, client.right, client.bottom};
}

status_text format_status_text(const wchar_t* format, std::uint32_t percent) noexcept
{
    status_text text{};
    std::swprintf(text.data(), text.size(), format, static_cast<int>(percent));
    text.back() = L'\0';
    return text;
}

} // namespace quill
