#include "retrieval/pane/status_pane_painter.h"

#include "platform/unique_handle.h"
#include "retrieval/pane/status_pane_layout.h"

namespace quill {
namespace {

constexpr COLORREF background_colour = RGB(79, 79, 79);
constexpr COLORREF bar_colour = RGB(25, 30, 80);
constexpr COLORREF text_colour = RGB(255, 255, 255);

struct memory_context_traits : null_is_empty<HDC>
{
    static void close(HDC context) noexcept { DeleteDC(context); }
};
using unique_memory_context = unique_resource<memory_context_traits>;

// Selects a GDI object for its own lifetime. A selected object cannot be deleted.
class selection
{
public:
    selection(HDC context, HGDIOBJ object) noexcept
        : context_(context), previous_(object ? SelectObject(context, object) : nullptr)
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

unique_gdi_object<HFONT> make_font()
{
    constexpr int height = 14;
    constexpr DWORD pitch_and_family = 48;
    return unique_gdi_object<HFONT>(CreateFontW(height, 0, 0, 0, 0, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                                                OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                                                pitch_and_family, L"Verdana"));
}

void fill(HDC context, const RECT& area, COLORREF colour)
{
    const unique_gdi_object<HBRUSH> brush(CreateSolidBrush(colour));
    FillRect(context, &area, brush.get());
}

void draw(HDC context, const RECT& client, const RECT& damaged, std::uint32_t percent, const wchar_t* text)
{
    const unique_gdi_object<HFONT> font = make_font();
    const selection font_selected(context, font.get());
    fill(context, damaged, background_colour);
    const RECT frame = status_bar_frame(client);
    FillRect(context, &frame, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    fill(context, status_bar(client, percent), bar_colour);
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, text_colour);
    RECT text_area = status_text_area(client);
    DrawTextW(context, text, -1, &text_area, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
}

} // namespace

void paint_status_pane(HDC target, const RECT& client, const RECT& damaged, std::uint32_t percent,
                       const wchar_t* text) noexcept
{
    const int width = client.right - client.left;
    const int height = client.bottom - client.top;
    const unique_memory_context context(CreateCompatibleDC(target));
    const unique_gdi_object<HBITMAP> bitmap(CreateCompatibleBitmap(target, width, height));
    if (!context || !bitmap)
        return;
    const selection bitmap_selected(context.get(), bitmap.get());
    draw(context.get(), client, damaged, percent, text);
    BitBlt(target, client.left, client.top, width, height, context.get(), 0, 0, SRCCOPY);
}

} // namespace quill
