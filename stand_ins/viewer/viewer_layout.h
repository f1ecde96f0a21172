// Where things stand in the viewer's window and which steps its controls take: values in, values out.
#pragma once

#include "stand_ins/viewer/document_facts.h"

#include <windows.h>

#include <array>
#include <cstddef>
#include <string>

namespace quill {

// A page that is shown or asked for.
struct page_view
{
    std::size_t page = 0; // 0-based
    double zoom = 1;      // 1 is 100 %

    bool operator==(const page_view&) const = default;
};

inline constexpr int strip_height = 34; // pixels, at the top of the window
inline constexpr int page_margin = 16;  // pixels around a page

// `zoom` within what the viewer shows; 1 for what is no number.
double sensible_zoom(double zoom);

// The next zoom of the usual steps, upwards or downwards.
double stepped_zoom(double zoom, bool upwards);

// Dots per inch at which a page is rendered: 96 at 100 %, less when the picture would not fit in memory.
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

// The furthest that a page of `picture` pixels can be scrolled in `area` pixels.
SIZE scroll_limit(SIZE picture, SIZE area);
POINT limited_scroll(POINT scroll, SIZE picture, SIZE area);

// Where the page's top left corner stands in the area: centred where the area is larger.
POINT page_origin(POINT scroll, SIZE picture, SIZE area);

// The scroll position at which a page is first shown: its top, centred sideways.
POINT first_scroll(SIZE picture, SIZE area);

} // namespace quill
