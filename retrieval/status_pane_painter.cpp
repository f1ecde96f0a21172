#include "retrieval/status_pane_painter.h"

#include "retrieval/status_pane_layout.h"

#include <memory>

namespace quill {
namespace {

constexpr COLORREF ground_colour = RGB(79, 79, 79);
constexpr COLORREF bar_colour = RGB(25, 30, 80);
constexpr COLORREF text_colour = RGB(255, 255, 255);

struct object_deleter
{
    using pointer = HGDIOBJ;
    void operator()(HGDIOBJ object) const noexcept { DeleteObject(object); }
};
using gdi_object = std::unique_ptr<void, object_deleter>;

struct context_deleter
{
    using pointer = HDC;
    void operator()(HDC context) const noexcept { DeleteDC(context); }
};
using memory_context = std::unique_ptr<void, context_deleter>;

// Selects an object for as long as it lives; a selected object cannot be deleted.
class selection
{
public:
    selection(HDC context, const gdi_object& object) noexcept
        : context_(context), previous_(object ? SelectObject(context, object.get()) : nullptr)
    {
    }
    ~selection()
    {
        if (previous_)
            SelectObject(context_, previous_);
    }
    selection(const selection&) = delete;
    selection& operator=(const selection&) = delete;

private:
    HDC context_;
    HGDIOBJ previous_;
};

gdi_object make_font()
{
    constexpr int height = 14;
    constexpr DWORD pitch_and_family = 48;
    return gdi_object(CreateFontW(height, 0, 0, 0, 0, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                                  OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, pitch_and_family,
                                  L"Verdana"));
}

void fill(HDC context, const RECT& area, COLORREF colour)
{
    const gdi_object brush(CreateSolidBrush(colour));
    FillRect(context, &area, static_cast<HBRUSH>(brush.get()));
}

void draw(HDC context, const RECT& client, const RECT& damaged, std::uint32_t percent, const wchar_t* text)
{
    const gdi_object font = make_font();
    const selection font_selected(context, font);
    fill(context, damaged, ground_colour);
    const RECT frame = StatusBarFrame(client);
    FillRect(context, &frame, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    fill(context, StatusBar(client, percent), bar_colour);
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, text_colour);
    RECT text_area = StatusTextArea(client);
    DrawTextW(context, text, -1, &text_area, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
}

} // namespace

void PaintStatusPane(HDC target, const RECT& client, const RECT& damaged, std::uint32_t percent,
                     const wchar_t* text) noexcept
{
    const int width = client.right - client.left;
    const int height = client.bottom - client.top;
    const memory_context context(CreateCompatibleDC(target));
    const gdi_object bitmap(CreateCompatibleBitmap(target, width, height));
    if (!context || !bitmap)
        return;
    const selection bitmap_selected(context.get(), bitmap);
    draw(context.get(), client, damaged, percent, text);
    BitBlt(target, client.left, client.top, width, height, context.get(), 0, 0, SRCCOPY);
}

} // namespace quill
