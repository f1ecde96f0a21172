#include "stand_ins/html_engine/page_surface.h"

#include <algorithm>

namespace quill {
namespace {

constexpr COLORREF ink = RGB(32, 36, 44);
constexpr COLORREF link_ink = RGB(0, 74, 173);
constexpr COLORREF frame_ink = RGB(180, 186, 196);
constexpr int line_step = 40;

SIZE client_size(HWND window)
{
    RECT client{};
    GetClientRect(window, &client);
    return {client.right, client.bottom};
}

SCROLLINFO scroll_info(UINT mask)
{
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = mask;
    return info;
}

} // namespace

HFONT page_surface::font(const text_style& style)
{
    for (const auto& known : fonts_)
        if (known.style == style)
            return static_cast<HFONT>(known.font.get());
    fonts_.push_back({style, make_interface_font(style.size, style.bold ? FW_BOLD : FW_NORMAL)});
    return static_cast<HFONT>(fonts_.back().font.get());
}

void page_surface::arrange(HWND window, const dom_node::pointer& body,
                           const std::function<bool(const dom_node& element)>& is_box)
{
    layout_ = {};
    const SIZE client = client_size(window);
    const HDC device = GetDC(window);
    if (body && device != nullptr) {
        const HGDIOBJ before = GetCurrentObject(device, OBJ_FONT);
        const auto measure = [&](std::wstring_view text, const text_style& style) {
            SelectObject(device, font(style));
            SIZE size{};
            GetTextExtentPoint32W(device, text.data(), static_cast<int>(text.size()), &size);
            return size;
        };
        layout_ = lay_out(*body, {static_cast<int>(client.cx), measure, is_box});
        SelectObject(device, before);
    }
    if (device != nullptr)
        ReleaseDC(window, device);

    offset_ = std::clamp(offset_, 0, std::max(0, layout_.height - static_cast<int>(client.cy)));
    SCROLLINFO info = scroll_info(SIF_RANGE | SIF_PAGE | SIF_POS);
    info.nMax = std::max(layout_.height - 1, 0);
    info.nPage = static_cast<UINT>(client.cy);
    info.nPos = offset_;
    SetScrollInfo(window, SB_VERT, &info, TRUE);
}

void page_surface::paint(HWND window)
{
    PAINTSTRUCT paint{};
    const HDC device = BeginPaint(window, &paint);
    if (device == nullptr)
        return;
    FillRect(device, &paint.rcPaint, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    SetBkMode(device, TRANSPARENT);
    SetViewportOrgEx(device, 0, -offset_, nullptr);
    const HGDIOBJ before = GetCurrentObject(device, OBJ_FONT);
    for (const auto& area : layout_.areas) {
        SetDCBrushColor(device, area.color);
        FillRect(device, &area.place, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
    }
    for (const auto& text : layout_.texts) {
        SelectObject(device, font(text.style));
        SetTextColor(device, text.style.color.value_or(text.style.link ? link_ink : ink));
        TextOutW(device, text.place.left, text.place.top, text.text.data(),
                 static_cast<int>(text.text.size()));
        if (text.style.link) {
            const RECT line = {text.place.left, text.place.bottom - 2, text.place.right,
                               text.place.bottom - 1};
            SetDCBrushColor(device, link_ink);
            FillRect(device, &line, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
        }
    }
    SelectObject(device, before);
    for (const auto& box : layout_.boxes) {
        SetDCBrushColor(device, frame_ink);
        FrameRect(device, &box.place, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
    }
    EndPaint(window, &paint);
}

std::vector<laid_box> page_surface::boxes() const
{
    auto boxes = layout_.boxes;
    for (auto& box : boxes)
        OffsetRect(&box.place, 0, -offset_);
    return boxes;
}

const laid_text* page_surface::text_at(POINT point) const
{
    point.y += offset_;
    for (const auto& text : layout_.texts)
        if (PtInRect(&text.place, point))
            return &text;
    return nullptr;
}

dom_node::pointer page_surface::element_at(POINT point) const
{
    const laid_text* const text = text_at(point);
    return text != nullptr ? text->element : nullptr;
}

bool page_surface::is_link_at(POINT point) const
{
    const laid_text* const text = text_at(point);
    return text != nullptr && text->style.link;
}

bool page_surface::scroll(HWND window, int code)
{
    SCROLLINFO info = scroll_info(SIF_ALL);
    GetScrollInfo(window, SB_VERT, &info);
    switch (code) {
    case SB_LINEUP:
        return scroll_by(window, -line_step);
    case SB_LINEDOWN:
        return scroll_by(window, line_step);
    case SB_PAGEUP:
        return scroll_by(window, -static_cast<int>(info.nPage));
    case SB_PAGEDOWN:
        return scroll_by(window, static_cast<int>(info.nPage));
    case SB_THUMBTRACK:
    case SB_THUMBPOSITION:
        return scroll_by(window, info.nTrackPos - offset_);
    default:
        return false;
    }
}

bool page_surface::scroll_by(HWND window, int pixels)
{
    const int last = std::max(0, layout_.height - static_cast<int>(client_size(window).cy));
    const int target = std::clamp(offset_ + pixels, 0, last);
    if (target == offset_)
        return false;
    offset_ = target;
    SCROLLINFO info = scroll_info(SIF_POS);
    info.nPos = offset_;
    SetScrollInfo(window, SB_VERT, &info, TRUE);
    InvalidateRect(window, nullptr, FALSE);
    return true;
}

} // namespace quill
