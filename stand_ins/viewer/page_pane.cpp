#include "stand_ins/viewer/page_pane.h"

#include "stand_ins/viewer/viewer_layout.h"

#include <windowsx.h>

#include <algorithm>
#include <utility>

namespace quill {
namespace {

constexpr COLORREF background_color = RGB(108, 114, 122);
constexpr COLORREF shadow_color = RGB(78, 83, 90);
constexpr COLORREF message_color = RGB(240, 242, 245);
constexpr int line_step = 48; // pixels

void fill(HDC dc, const RECT& area, COLORREF color)
{
    SetDCBrushColor(dc, color);
    FillRect(dc, &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

// A memory device context for double buffering.
class back_buffer
{
public:
    back_buffer(HDC target, SIZE size)
        : dc_(CreateCompatibleDC(target)), bitmap_(CreateCompatibleBitmap(target, size.cx, size.cy)),
          old_(SelectObject(dc_, bitmap_.get())), target_(target), size_(size)
    {
    }
    back_buffer(const back_buffer&) = delete;
    back_buffer& operator=(const back_buffer&) = delete;
    ~back_buffer()
    {
        BitBlt(target_, 0, 0, size_.cx, size_.cy, dc_, 0, 0, SRCCOPY);
        SelectObject(dc_, old_);
        DeleteDC(dc_);
    }
    HDC dc() const { return dc_; }

private:
    HDC dc_;
    gdi_object bitmap_;
    HGDIOBJ old_;
    HDC target_;
    SIZE size_;
};

} // namespace

page_pane::page_pane(page_pane_owner& owner) : owner_(owner), font_(make_interface_font(14)) {}

void page_pane::show_page(page_picture picture, bool from_bottom)
{
    const bool same_size = picture_.size.cx == picture.size.cx && picture_.size.cy == picture.size.cy;
    picture_ = std::move(picture);
    links_.clear();
    message_.clear();
    const LONG across = same_size ? scroll_.x : first_scroll(picture_.size, area()).x;
    const LONG down = from_bottom ? scroll_limit(picture_.size, area()).cy : 0;
    scroll_ = {across, down};
    update_scroll_bars();
    Invalidate(FALSE);
}

void page_pane::show_links(std::vector<page_link> links)
{
    links_ = std::move(links);
}

void page_pane::show_message(std::wstring message)
{
    picture_ = {};
    links_.clear();
    message_ = std::move(message);
    scroll_ = {};
    update_scroll_bars();
    Invalidate(FALSE);
}

SIZE page_pane::area() const
{
    RECT client = {};
    ::GetClientRect(m_hWnd, &client);
    return {client.right, client.bottom};
}

int page_pane::page_step() const
{
    return std::max<int>(line_step, area().cy - line_step);
}

bool page_pane::scroll_by(int across, int down)
{
    const POINT wanted = limited_scroll({scroll_.x + across, scroll_.y + down}, picture_.size, area());
    if (wanted.x == scroll_.x && wanted.y == scroll_.y)
        return false;
    scroll_ = wanted;
    update_scroll_bars();
    Invalidate(FALSE);
    return true;
}

void page_pane::update_scroll_bars()
{
    // Showing one scroll bar reduces the client area; the resulting WM_SIZE calls this function again.
    const SIZE visible = area();
    const int along[2] = {SB_HORZ, SB_VERT};
    const LONG whole[2] = {picture_.size.cx + 2 * page_margin, picture_.size.cy + 2 * page_margin};
    const LONG page[2] = {visible.cx, visible.cy};
    const LONG at[2] = {scroll_.x, scroll_.y};
    for (int i = 0; i < 2; ++i) {
        SCROLLINFO info = {};
        info.cbSize = sizeof(info);
        info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS;
        info.nMax = picture_ ? std::max<LONG>(0, whole[i] - 1) : 0;
        info.nPage = static_cast<UINT>(std::max<LONG>(0, page[i]));
        info.nPos = at[i];
        ::SetScrollInfo(m_hWnd, along[i], &info, TRUE);
    }
}

void page_pane::on_scroll_bar(int bar, WORD request)
{
    SCROLLINFO info = {};
    info.cbSize = sizeof(info);
    info.fMask = SIF_ALL;
    ::GetScrollInfo(m_hWnd, bar, &info);
    int step = 0;
    switch (request) {
    case SB_LINEUP:
        step = -line_step;
        break;
    case SB_LINEDOWN:
        step = line_step;
        break;
    case SB_PAGEUP:
        step = -static_cast<int>(info.nPage);
        break;
    case SB_PAGEDOWN:
        step = static_cast<int>(info.nPage);
        break;
    case SB_THUMBTRACK:
    case SB_THUMBPOSITION:
        step = info.nTrackPos - info.nPos;
        break;
    default:
        return;
    }
    scroll_by(bar == SB_HORZ ? step : 0, bar == SB_VERT ? step : 0);
}

void page_pane::on_wheel(WPARAM wparam)
{
    wheel_rest_ += GET_WHEEL_DELTA_WPARAM(wparam);
    const int steps = wheel_rest_ / WHEEL_DELTA;
    wheel_rest_ %= WHEEL_DELTA;
    if (steps == 0)
        return;
    if ((GET_KEYSTATE_WPARAM(wparam) & MK_CONTROL) != 0)
        owner_.on_step_zoom(steps > 0);
    else if (!scroll_by(0, -steps * 2 * line_step))
        owner_.on_turn_page(steps < 0);
}

const page_link* page_pane::link_at(POINT point) const
{
    const POINT origin = page_origin(scroll_, picture_.size, area());
    const double x = static_cast<double>(point.x - origin.x) / std::max<LONG>(1, picture_.size.cx);
    const double y = static_cast<double>(point.y - origin.y) / std::max<LONG>(1, picture_.size.cy);
    for (const page_link& link : links_) {
        if (x >= link.left && x < link.right && y >= link.top && y < link.bottom)
            return &link;
    }
    return nullptr;
}

void page_pane::draw_message(HDC dc, RECT bounds)
{
    const HGDIOBJ old = SelectObject(dc, font_.get());
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, message_color);
    DrawTextW(dc, message_.c_str(), -1, &bounds,
              DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    SelectObject(dc, old);
}

void page_pane::draw(HDC dc, const RECT& bounds)
{
    fill(dc, bounds, background_color);
    if (!picture_) {
        draw_message(dc, bounds);
        return;
    }
    const POINT origin = page_origin(scroll_, picture_.size, {bounds.right, bounds.bottom});
    constexpr LONG shadow = 3;
    fill(dc,
         {origin.x + shadow, origin.y + shadow, origin.x + picture_.size.cx + shadow,
          origin.y + picture_.size.cy + shadow},
         shadow_color);
    const HDC source = CreateCompatibleDC(dc);
    const HGDIOBJ old = SelectObject(source, picture_.bitmap.get());
    BitBlt(dc, origin.x, origin.y, picture_.size.cx, picture_.size.cy, source, 0, 0, SRCCOPY);
    SelectObject(source, old);
    DeleteDC(source);
}

void page_pane::paint()
{
    PAINTSTRUCT paint_state = {};
    const HDC dc = ::BeginPaint(m_hWnd, &paint_state);
    const SIZE size = area();
    if (dc != nullptr && size.cx > 0 && size.cy > 0) {
        const back_buffer buffer(dc, size);
        draw(buffer.dc(), {0, 0, size.cx, size.cy});
    }
    ::EndPaint(m_hWnd, &paint_state);
    if (picture_)
        owner_.on_page_painted();
}

bool page_pane::handle(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result)
{
    const POINT point = {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
    switch (message) {
    case WM_PAINT:
        paint();
        return true;
    case WM_ERASEBKGND:
        result = 1;
        return true;
    case WM_SIZE:
        scroll_ = limited_scroll(scroll_, picture_.size, area());
        update_scroll_bars();
        Invalidate(FALSE);
        return true;
    case WM_HSCROLL:
    case WM_VSCROLL:
        on_scroll_bar(message == WM_HSCROLL ? SB_HORZ : SB_VERT, LOWORD(wparam));
        return true;
    case WM_MOUSEWHEEL:
        on_wheel(wparam);
        return true;
    case WM_SETCURSOR: {
        POINT cursor = {};
        ::GetCursorPos(&cursor);
        ::ScreenToClient(m_hWnd, &cursor);
        if (LOWORD(lparam) != HTCLIENT || link_at(cursor) == nullptr)
            return false;
        ::SetCursor(::LoadCursorW(nullptr, IDC_HAND));
        result = TRUE;
        return true;
    }
    case WM_LBUTTONDOWN:
        ::SetFocus(m_hWnd);
        return true;
    case WM_LBUTTONUP:
        if (const page_link* link = link_at(point))
            owner_.on_link(*link, (wparam & MK_CONTROL) != 0);
        return true;
    case WM_KEYDOWN:
        owner_.on_key(wparam);
        return true;
    default:
        return false;
    }
}

BOOL page_pane::ProcessWindowMessage(HWND, UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result, DWORD)
{
    result = 0;
    return handle(message, wparam, lparam, result) ? TRUE : FALSE;
}

} // namespace quill
