// Lays a page out for a given width. Plain code: the caller provides the text measurement.
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
    std::optional<COLORREF> color; // if the page specifies one

    friend bool operator==(const text_style&, const text_style&) = default;
};

struct laid_text
{
    RECT place;
    std::wstring text;
    text_style style;
    dom_node::pointer element; // the innermost element that contains the text
};

struct laid_box
{
    RECT place;
    dom_node::pointer element;
};

// A background, filled before the text is drawn.
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

struct layout_context
{
    int width = 0;
    std::function<SIZE(std::wstring_view text, const text_style& style)> measure;
    // Whether an element is replaced by a box.
    std::function<bool(const dom_node& element)> is_box;
};

page_layout lay_out(const dom_node& body, const layout_context& context);

} // namespace quill
