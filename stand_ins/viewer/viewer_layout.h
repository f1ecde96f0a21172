// Layout of the viewer's window, zoom steps and scroll positions. Plain code.
#pragma once

#include "stand_ins/viewer/document_facts.h"

#include <windows.h>

#include <array>
#include <cstddef>
#include <string>

namespace quill {

// A page and its zoom.
struct page_view
{
    std::size_t page = 0; // 0-based
    double zoom = 1;      // 1 is 100 %

    bool operator==(const page_view&) const = default;
};

inline constexpr int strip_height = 34; // pixels, at the top of the window
inline constexpr int page_margin = 16;  // pixels around a page

// `zoom` clamped to the supported range; 1 for NaN.
double clamped_zoom(double zoom);

// The next larger or smaller standard zoom.
double stepped_zoom(double zoom, bool upwards);

// The resolution in dots per inch for rendering a page: 96 at 100 %, limited by the picture's memory.
unsigned resolution_for(const page_size& size, double zoom);

enum class strip_command
{
    none,
    previous_page,
    next_page,
    zoom_out,
    zoom_in,
    save_as
};

struct strip_button
{
    strip_command command;
    RECT place;
    const wchar_t* label;
};

const std::array<strip_button, 5>& strip_buttons();
strip_command strip_command_at(POINT point);

// "page 2 of 5 - 150 %"
std::wstring strip_status(const page_view& view, std::size_t page_count);

// The maximum scroll position of a page of `picture` pixels in `area` pixels.
SIZE scroll_limit(SIZE picture, SIZE area);
POINT limited_scroll(POINT scroll, SIZE picture, SIZE area);

// The position of the page's top left corner in the area. The page is centred if the area is larger.
POINT page_origin(POINT scroll, SIZE picture, SIZE area);

// The initial scroll position of a page: the top, centred horizontally.
POINT first_scroll(SIZE picture, SIZE area);

} // namespace quill
