// Where the words of a page stand in a window of a given width. Plain: how wide text is comes from outside.
#pragma once

#include "stand_ins/html_engine/dom/dom_node.h"

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quill {

struct text_style
{
    int size = 15; // pixels
    bool bold = false;
    bool link = false;
    std::optional<COLORREF> color; // stated by the page

    friend bool operator==(const text_style&, const text_style&) = default;
};

struct laid_text
{
    RECT place;
    std::wstring text;
    text_style style;
    dom_node::pointer element; // the innermost one around the text
};

struct laid_box
{
    RECT place;
    dom_node::pointer element;
};

// Filled before anything is written on it, in order.
struct laid_area
{
    RECT place;
    COLORREF color;
};

struct page_layout
{
    std::vector<laid_area> areas;
    std::vector<laid_text> texts;
    std::vector<laid_box> boxes;
    int height = 0;
};

struct layout_surroundings
{
    int width = 0;
    std::function<SIZE(std::wstring_view text, const text_style& style)> measure;
    // Whether an element is shown as a box of its own instead of its contents.
    std::function<bool(const dom_node& element)> is_box;
};

page_layout lay_out(const dom_node& body, const layout_surroundings& surroundings);

} // namespace quill
