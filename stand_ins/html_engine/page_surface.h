// The page in its window: layout, painting, scrolling and hit testing.
#pragma once

#include "stand_ins/common/gdi_object.h"
#include "stand_ins/html_engine/page_layout.h"

#include <windows.h>

#include <functional>
#include <vector>

namespace quill {

class page_surface
{
public:
    // Lays the body out for the window's width and sets the scroll bar. A null body is an empty page.
    void arrange(HWND window, const dom_node::pointer& body,
                 const std::function<bool(const dom_node& element)>& is_box);
    void paint(HWND window);

    // The boxes in window coordinates at the current scroll position.
    std::vector<laid_box> boxes() const;
    // The element whose text is at this point of the window; null if there is none.
    dom_node::pointer element_at(POINT point) const;
    // True if the text at this point is part of a link.
    bool is_link_at(POINT point) const;

    // Both return whether the scroll position changed.
    bool scroll(HWND window, int code);
    bool scroll_by(HWND window, int pixels);

private:
    const laid_text* text_at(POINT point) const;
    HFONT font(const text_style& style);

    struct styled_font
    {
        text_style style;
        gdi_object font;
    };

    page_layout layout_;
    std::vector<styled_font> fonts_;
    int offset_ = 0; // pixels of the page above the window
};

} // namespace quill
