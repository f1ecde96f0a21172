#include "stand_ins/viewer/viewer_strip.h"

#include "stand_ins/viewer/viewer_layout.h"

#include <algorithm>

namespace quill {
namespace {

constexpr COLORREF strip_color = RGB(46, 52, 60);
constexpr COLORREF button_color = RGB(68, 76, 86);
constexpr COLORREF text_color = RGB(240, 242, 245);
constexpr COLORREF faint_color = RGB(176, 184, 194);
constexpr LONG status_width = 190;

void fill(HDC dc, const RECT& area, COLORREF color)
{
    SetDCBrushColor(dc, color);
    FillRect(dc, &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

} // namespace

void viewer_strip::draw_buttons(HDC dc) const
{
    SetTextColor(dc, text_color);
    for (const strip_button& button : strip_buttons()) {
        RECT place = button.place;
        fill(dc, place, button_color);
        const bool is_symbol = button.label[1] == L'\0';
        SelectObject(dc, is_symbol ? symbol_font_.get() : font_.get());
        DrawTextW(dc, button.label, -1, &place, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
    }
}

void viewer_strip::draw_texts(HDC dc, const RECT& strip, const std::wstring& file_name,
                              const std::wstring& status) const
{
    constexpr UINT format = DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS;
    SelectObject(dc, font_.get());
    RECT right = strip;
    right.right -= 12;
    RECT left = strip;
    left.left = strip_buttons().back().place.right + 16;
    right.left = std::max(left.left, right.right - status_width);
    left.right = right.left - 8;
    SetTextColor(dc, text_color);
    DrawTextW(dc, status.c_str(), -1, &right, format | DT_RIGHT);
    SetTextColor(dc, faint_color);
    DrawTextW(dc, file_name.c_str(), -1, &left, format);
}

void viewer_strip::paint(HWND window, const std::wstring& file_name, const std::wstring& status) const
{
    PAINTSTRUCT state = {};
    const HDC dc = BeginPaint(window, &state);
    RECT strip = {};
    GetClientRect(window, &strip);
    strip.bottom = strip_height;
    if (dc != nullptr) {
        const HGDIOBJ old = SelectObject(dc, font_.get());
        SetBkMode(dc, TRANSPARENT);
        fill(dc, strip, strip_color);
        draw_buttons(dc);
        draw_texts(dc, strip, file_name, status);
        SelectObject(dc, old);
    }
    EndPaint(window, &state);
}

} // namespace quill
