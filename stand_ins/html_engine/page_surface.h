// The page as its window shows it: laid out for the window's size, painted, scrolled and clicked on.
#pragma once

#include "stand_ins/html_engine/page_layout.h"
#include "stand_ins/common/gdi_object.h"

#include <windows.h>

#include <functional>
#include <vector>

namespace quill {

class page_surface
{
public:
    // Lays the body out for the window's width and sets its scroll bar. A null body is an empty page.
    void arrange(HWND window, const dom_node::pointer& body,
                 const std::function<bool(const dom_node& element)>& is_box);
    void paint(HWND window);

    // The boxes' places in the window, as it is scrolled now.
    std::vector<laid_box> boxes() const;
    // The element whose text stands at that point of the window; null where there is none.
    dom_node::pointer element_at(POINT point) const;
    // True when the text there is a link's.
    bool is_link_at(POINT point) const;

    // Both: whether the page moved.
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
