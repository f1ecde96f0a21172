#include "retrieval/pane/status_pane.h"

#include "retrieval/pane/status_pane_layout.h"
#include "retrieval/pane/status_pane_painter.h"

#include <algorithm>

namespace quill {
namespace {

constexpr UINT text_format_string = 101;

} // namespace

status_pane::~status_pane()
{
    Detach();
}

int status_pane::Create(HWND parent, HMODULE resources)
{
    if (window_)
        DestroyWindow(window_);
    resources_ = resources;
    parent_ = parent;
    percent_ = 0;
    shown_ = 1;
    window_ = CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, parent, nullptr,
                              GetModuleHandleW(nullptr), nullptr);
    if (!window_)
        return 1;
    // The object first: setting the procedure may already call it.
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    previous_procedure_ = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(window_procedure)));
    recentre();
    return 1;
}

void status_pane::SetPercent(std::uint32_t percent)
{
    percent_ = std::min<std::uint32_t>(percent, 100);
    if (window_)
        InvalidateRect(window_, nullptr, TRUE);
}

void status_pane::Hide()
{
    if (shown_ != 1)
        return;
    shown_ = 0;
    if (window_)
        ShowWindow(window_, SW_HIDE);
}

void status_pane::recentre()
{
    if (!window_)
        return;
    RECT client{};
    GetClientRect(parent_, &client);
    const POINT position = status_pane_position({client.right, client.bottom});
    SetWindowPos(window_, nullptr, position.x, position.y, status_pane_size.cx, status_pane_size.cy,
                 shown_ ? SWP_SHOWWINDOW : SWP_HIDEWINDOW);
}

void status_pane::Detach()
{
    if (!window_)
        return;
    if (previous_procedure_) {
        SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous_procedure_));
        SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
        previous_procedure_ = nullptr;
    }
    window_ = nullptr;
}

LRESULT CALLBACK status_pane::window_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
{
    auto* pane = reinterpret_cast<status_pane*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!pane)
        return DefWindowProcW(window, message, wparam, lparam);
    switch (message) {
    case WM_ERASEBKGND:
        return 1; // WM_PAINT covers the whole area
    case WM_PAINT:
        pane->paint();
        return 0;
    case WM_NCDESTROY: {
        // The parent is being destroyed. The control's own procedure frees its memory here.
        const WNDPROC previous = pane->previous_procedure_;
        pane->Detach();
        return CallWindowProcW(previous ? previous : DefWindowProcW, window, message, wparam, lparam);
    }
    default:
        return DefWindowProcW(window, message, wparam, lparam);
    }
}

void status_pane::paint()
{
    PAINTSTRUCT paint{};
    const HDC context = BeginPaint(window_, &paint);
    if (!context)
        return;
    RECT client{};
    GetClientRect(window_, &client);
    status_text format{};
    LoadStringW(resources_, text_format_string, format.data(), static_cast<int>(format.size()));
    paint_status_pane(context, client, paint.rcPaint, percent_,
                      format_status_text(format.data(), percent_).data());
    EndPaint(window_, &paint);
}

} // namespace quill
