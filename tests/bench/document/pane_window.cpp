#include "tests/bench/document/pane_window.h"

#include "retrieval/download/window_messages.h"

namespace quill::bench {
namespace {

constexpr wchar_t class_name[] = L"quill pane window";

} // namespace

pane_window::pane_window(HWND parent, HMODULE resources)
{
    WNDCLASSW description{};
    description.lpfnWndProc = procedure;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = class_name;
    RegisterClassW(&description); // fails from the second window on: the class is registered
    RECT area{};
    GetClientRect(parent, &area);
    window_ = CreateWindowExW(0, class_name, L"", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 0, 0, area.right,
                              area.bottom, parent, nullptr, description.hInstance, nullptr);
    pane_.Create(window_, resources);
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&pane_));
}

pane_window::~pane_window()
{
    DestroyWindow(window_);
}

void pane_window::repaint(std::uint32_t percent)
{
    pane_.SetPercent(percent);
    UpdateWindow(GetWindow(window_, GW_CHILD));
}

void pane_window::repaint_with_nothing() const
{
    const HWND painted = GetWindow(window_, GW_CHILD);
    InvalidateRect(painted, nullptr, TRUE);
    RECT area{};
    GetClientRect(painted, &area);
    PAINTSTRUCT paint{};
    const HDC target = BeginPaint(painted, &paint);
    const HDC context = CreateCompatibleDC(target);
    const HBITMAP bitmap = CreateCompatibleBitmap(target, area.right, area.bottom);
    const HGDIOBJ before = SelectObject(context, bitmap);
    BitBlt(target, 0, 0, area.right, area.bottom, context, 0, 0, SRCCOPY);
    SelectObject(context, before);
    DeleteObject(bitmap);
    DeleteDC(context);
    EndPaint(painted, &paint);
}

LRESULT CALLBACK pane_window::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
{
    auto* const pane = reinterpret_cast<status_pane*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message != WM_USER_PROGRESS || !pane)
        return DefWindowProcW(window, message, wparam, lparam);
    const auto& record = *reinterpret_cast<const progress_record*>(lparam);
    pane->SetPercent(record.progress_max < 100 ? 0 : record.progress / (record.progress_max / 100));
    return 0;
}

} // namespace quill::bench
