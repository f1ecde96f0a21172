#include "stand_ins/editor/editor_window.h"

#include "stand_ins/common/gdi_object.h"
#include "stand_ins/common/window_picture.h"

#include <array>

namespace quill::editor {
namespace {

constexpr wchar_t class_name[] = L"QuillStandInEditor";
constexpr wchar_t title[] = L"Quill editor (stand-in)";
constexpr int width = 960; // pixels
constexpr int height = 240;
constexpr int margin = 24;
constexpr int band_height = 52;
constexpr int gap = 14;
constexpr COLORREF paper = RGB(250, 248, 243);
constexpr COLORREF band = RGB(38, 70, 83);
constexpr COLORREF faint = RGB(120, 128, 132);

void fill(HDC context, const RECT& area, COLORREF color)
{
    SetDCBrushColor(context, color);
    FillRect(context, &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

// Draws text at the top of the area and moves the area's top below it.
void draw(HDC context, RECT& area, HGDIOBJ font, COLORREF color, const std::wstring& text)
{
    constexpr UINT format = DT_WORDBREAK | DT_EDITCONTROL | DT_NOPREFIX;
    SelectObject(context, font);
    SetTextColor(context, color);
    area.top += DrawTextW(context, text.c_str(), -1, &area, format);
}

void paint(HWND window, const start_record& start)
{
    PAINTSTRUCT state{};
    const HDC context = BeginPaint(window, &state);
    RECT area{};
    GetClientRect(window, &area);
    fill(context, area, paper);
    RECT band_area = {0, 0, area.right, band_height};
    fill(context, band_area, band);

    const gdi_object title_font = make_interface_font(18, FW_BOLD);
    const gdi_object label_font = make_interface_font(12);
    const gdi_object value_font = make_interface_font(15);
    SetBkMode(context, TRANSPARENT);
    const HGDIOBJ font_before = SelectObject(context, title_font.get());
    SetTextColor(context, paper);
    band_area.left += margin;
    DrawTextW(context, title, -1, &band_area, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);

    struct row
    {
        const wchar_t* label;
        const std::wstring& value;
    };
    const std::array<row, 2> rows = {
        {{L"Command line", start.command_line}, {L"Working directory", start.directory}}};
    RECT text_area = {margin, band_height + margin, area.right - margin, area.bottom - margin};
    for (const auto& [label, value] : rows) {
        draw(context, text_area, label_font.get(), faint, label);
        draw(context, text_area, value_font.get(), band, value);
        text_area.top += gap;
    }
    SelectObject(context, font_before);
    EndPaint(window, &state);
}

LRESULT CALLBACK window_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
{
    switch (message) {
    case WM_CREATE:
        SetWindowLongPtrW(
            window, GWLP_USERDATA,
            reinterpret_cast<LONG_PTR>(reinterpret_cast<CREATESTRUCTW*>(lparam)->lpCreateParams));
        return 0;
    case WM_PAINT:
        paint(window, *reinterpret_cast<const start_record*>(GetWindowLongPtrW(window, GWLP_USERDATA)));
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(window, message, wparam, lparam);
    }
}

} // namespace

int show_start(HINSTANCE instance, const start_record& start, int show_command, const std::wstring& picture)
{
    WNDCLASSEXW window_class{};
    window_class.cbSize = sizeof window_class;
    window_class.lpfnWndProc = window_procedure;
    window_class.hInstance = instance;
    window_class.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    window_class.lpszClassName = class_name;
    RegisterClassExW(&window_class);
    const HWND window = CreateWindowExW(0, class_name, title, WS_OVERLAPPEDWINDOW, 240, 330, width, height,
                                        nullptr, nullptr, instance, const_cast<start_record*>(&start));
    if (!window)
        return 1;
    ShowWindow(window, show_command);
    SetForegroundWindow(window);
    UpdateWindow(window);
    if (!picture.empty() && !save_window_picture(window, picture))
        return 1;

    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return static_cast<int>(message.wParam);
}

} // namespace quill::editor
