#include "suite/editor/editor_window.h"

#include "platform/unique_handle.h"

namespace quill::editor {
namespace {

constexpr wchar_t class_name[] = L"QuillStandInEditor";
constexpr wchar_t title[] = L"Quill editor (stand-in)";
constexpr int width = 720;
constexpr int height = 260;
constexpr int margin = 24;
constexpr COLORREF paper = RGB(250, 248, 243);
constexpr COLORREF band = RGB(38, 70, 83);

void paint(HWND window, const std::wstring& text)
{
    PAINTSTRUCT state{};
    const HDC context = BeginPaint(window, &state);
    RECT area{};
    GetClientRect(window, &area);
    const unique_gdi_object<HBRUSH> paper_brush(CreateSolidBrush(paper));
    const unique_gdi_object<HBRUSH> band_brush(CreateSolidBrush(band));
    FillRect(context, &area, paper_brush.get());
    RECT band_area = area;
    band_area.bottom = band_area.top + 2 * margin;
    FillRect(context, &band_area, band_brush.get());

    LOGFONTW description{};
    description.lfHeight = -18;
    wcscpy_s(description.lfFaceName, L"Verdana");
    const unique_gdi_object<HFONT> font(CreateFontIndirectW(&description));
    const HGDIOBJ font_before = SelectObject(context, font.get());
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, paper);
    band_area.left += margin;
    DrawTextW(context, title, -1, &band_area, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
    SetTextColor(context, band);
    RECT text_area = {area.left + margin, band_area.bottom + margin, area.right - margin,
                      area.bottom - margin};
    DrawTextW(context, text.c_str(), -1, &text_area, DT_WORDBREAK | DT_EDITCONTROL | DT_NOPREFIX);
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
        paint(window, *reinterpret_cast<const std::wstring*>(GetWindowLongPtrW(window, GWLP_USERDATA)));
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(window, message, wparam, lparam);
    }
}

} // namespace

int show_text(HINSTANCE instance, const std::wstring& text, int show_command)
{
    WNDCLASSEXW window_class{};
    window_class.cbSize = sizeof window_class;
    window_class.lpfnWndProc = window_procedure;
    window_class.hInstance = instance;
    window_class.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    window_class.lpszClassName = class_name;
    RegisterClassExW(&window_class);
    const HWND window = CreateWindowExW(0, class_name, title, WS_OVERLAPPEDWINDOW, 280, 330, width, height,
                                        nullptr, nullptr, instance, const_cast<std::wstring*>(&text));
    if (!window)
        return 1;
    ShowWindow(window, show_command);
    SetForegroundWindow(window);

    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return static_cast<int>(message.wParam);
}

} // namespace quill::editor
