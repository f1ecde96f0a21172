// The page's window. Layout after a change is posted, so that a script with many changes causes one layout,
// and embedded objects are not activated inside the browser's activation of the page.
#include "stand_ins/html_engine/com_results.h"
#include "stand_ins/html_engine/embedded_class.h"
#include "stand_ins/html_engine/html_page.h"

#include <windowsx.h>

namespace {

POINT point_of(LPARAM lparam)
{
    return {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
}

} // namespace

void html_page::tree_changed()
{
    if (m_hWnd != nullptr && !arrange_posted_)
        arrange_posted_ = ::PostMessageW(m_hWnd, arrange_message, 0, 0) != FALSE;
}

void html_page::arrange()
{
    const bool loaded = page_->state == quill::page_state::complete;
    const auto is_box = [](const quill::dom_node& element) {
        return quill::embedded_class(element).has_value();
    };
    surface_.arrange(m_hWnd, loaded ? page_->body() : nullptr, is_box);
    ::InvalidateRect(m_hWnd, nullptr, FALSE);
}

LRESULT html_page::OnCreate(UINT, WPARAM, LPARAM, BOOL&)
{
    ::SetWindowLongPtrW(m_hWnd, GWL_STYLE,
                        ::GetWindowLongPtrW(m_hWnd, GWL_STYLE) | WS_CLIPCHILDREN | WS_VSCROLL);
    arrange_posted_ = false;
    tree_changed();
    return 0;
}

LRESULT html_page::OnDestroy(UINT, WPARAM, LPARAM, BOOL& handled)
{
    pressed_.reset();
    quill::guarded([&] {
        embedded_.close();
        return S_OK;
    });
    handled = FALSE;
    return 0;
}

LRESULT html_page::OnArrange(UINT, WPARAM, LPARAM, BOOL&)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    arrange_posted_ = false;
    quill::guarded([&] {
        arrange();
        if (embedded_.is_open())
            embedded_.place(surface_.boxes());
        else
            embedded_.open(surface_.boxes(), *this);
        return S_OK;
    });
    return 0;
}

LRESULT html_page::OnSize(UINT, WPARAM, LPARAM, BOOL&)
{
    tree_changed();
    return 0;
}

LRESULT html_page::OnPaint(UINT, WPARAM, LPARAM, BOOL&)
{
    surface_.paint(m_hWnd);
    return 0;
}

LRESULT html_page::OnEraseBackground(UINT, WPARAM, LPARAM, BOOL&)
{
    return 1; // WM_PAINT fills the client area
}

LRESULT html_page::OnSetCursor(UINT, WPARAM, LPARAM lparam, BOOL& handled)
{
    POINT point{};
    ::GetCursorPos(&point);
    ::ScreenToClient(m_hWnd, &point);
    handled = LOWORD(lparam) == HTCLIENT && surface_.is_link_at(point);
    if (handled)
        ::SetCursor(::LoadCursorW(nullptr, IDC_HAND));
    return handled;
}

LRESULT html_page::OnButtonDown(UINT, WPARAM, LPARAM lparam, BOOL&)
{
    ::SetFocus(m_hWnd);
    pressed_ = surface_.element_at(point_of(lparam));
    return 0;
}

LRESULT html_page::OnButtonUp(UINT, WPARAM, LPARAM lparam, BOOL&)
{
    const auto pressed = std::move(pressed_);
    quill::guarded([&] {
        if (pressed && pressed == surface_.element_at(point_of(lparam)))
            click(pressed);
        return S_OK;
    });
    return 0;
}

LRESULT html_page::OnScroll(UINT, WPARAM wparam, LPARAM, BOOL&)
{
    if (surface_.scroll(m_hWnd, LOWORD(wparam)))
        embedded_.place(surface_.boxes());
    return 0;
}

LRESULT html_page::OnWheel(UINT, WPARAM wparam, LPARAM, BOOL&)
{
    constexpr int pixels_per_notch = 60;
    if (surface_.scroll_by(m_hWnd, -GET_WHEEL_DELTA_WPARAM(wparam) * pixels_per_notch / WHEEL_DELTA))
        embedded_.place(surface_.boxes());
    return 0;
}
