// Draws the strip at the top of the viewer's window: buttons, file name, page and zoom.
#pragma once

#include "stand_ins/common/gdi_object.h"

#include <windows.h>

#include <string>

namespace quill {

class viewer_strip
{
public:
    // Handles WM_PAINT of the window.
    void paint(HWND window, const std::wstring& file_name, const std::wstring& status) const;

private:
    void draw_buttons(HDC dc) const;
    void draw_texts(HDC dc, const RECT& strip, const std::wstring& file_name,
                    const std::wstring& status) const;

    gdi_object font_ = make_interface_font(12);
    gdi_object symbol_font_ = make_interface_font(17, FW_BOLD);
};

} // namespace quill
