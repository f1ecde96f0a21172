// CWindow: wraps a window handle and the functions that take one. Does not own the window.
#pragma once

#include "atl/detail/rect_size.h"

#include <windows.h>

namespace ATL {

// A rectangle passed by reference, by pointer or as null.
class _U_RECT
{
public:
    _U_RECT(LPRECT lpRect) : m_lpRect(lpRect) {}
    _U_RECT(RECT& rc) : m_lpRect(&rc) {}

    LPRECT m_lpRect;
};

// A menu for a top-level window, or the identifier of a child window.
class _U_MENUorID
{
public:
    _U_MENUorID(HMENU hMenu) : m_hMenu(hMenu) {}
    _U_MENUorID(UINT nID) : m_hMenu(reinterpret_cast<HMENU>(static_cast<UINT_PTR>(nID))) {}

    HMENU m_hMenu;
};

class CWindow
{
public:
    CWindow(HWND hWnd = nullptr) noexcept : m_hWnd(hWnd) {}

    CWindow& operator=(HWND hWnd) noexcept
    {
        m_hWnd = hWnd;
        return *this;
    }
    operator HWND() const noexcept { return m_hWnd; }

    void Attach(HWND hWndNew) noexcept { m_hWnd = hWndNew; }
    HWND Detach() noexcept
    {
        const HWND hWnd = m_hWnd;
        m_hWnd = nullptr;
        return hWnd;
    }

    BOOL IsWindow() const noexcept { return ::IsWindow(m_hWnd); }
    BOOL IsWindowVisible() const noexcept { return ::IsWindowVisible(m_hWnd); }
    BOOL IsChild(HWND hWnd) const noexcept { return ::IsChild(m_hWnd, hWnd); }
    HWND GetParent() const noexcept { return ::GetParent(m_hWnd); }
    int GetDlgCtrlID() const noexcept { return ::GetDlgCtrlID(m_hWnd); }
    DWORD GetStyle() const noexcept { return static_cast<DWORD>(::GetWindowLongPtrW(m_hWnd, GWL_STYLE)); }

    BOOL DestroyWindow() noexcept
    {
        const BOOL destroyed = ::DestroyWindow(m_hWnd);
        if (destroyed)
            m_hWnd = nullptr;
        return destroyed;
    }
    BOOL ShowWindow(int nCmdShow) noexcept { return ::ShowWindow(m_hWnd, nCmdShow); }
    HWND SetFocus() noexcept { return ::SetFocus(m_hWnd); }

    BOOL GetClientRect(LPRECT lpRect) const noexcept { return ::GetClientRect(m_hWnd, lpRect); }
    BOOL GetWindowRect(LPRECT lpRect) const noexcept { return ::GetWindowRect(m_hWnd, lpRect); }
    BOOL MoveWindow(int x, int y, int nWidth, int nHeight, BOOL bRepaint = TRUE) noexcept
    {
        return ::MoveWindow(m_hWnd, x, y, nWidth, nHeight, bRepaint);
    }
    BOOL SetWindowPos(HWND hWndInsertAfter, int x, int y, int cx, int cy, UINT nFlags) noexcept
    {
        return ::SetWindowPos(m_hWnd, hWndInsertAfter, x, y, cx, cy, nFlags);
    }
    BOOL SetWindowPos(HWND hWndInsertAfter, LPCRECT lpRect, UINT nFlags) noexcept
    {
        const SIZE size = detail::size_of(*lpRect);
        return ::SetWindowPos(m_hWnd, hWndInsertAfter, lpRect->left, lpRect->top, size.cx, size.cy, nFlags);
    }

    BOOL Invalidate(BOOL bErase = TRUE) noexcept { return ::InvalidateRect(m_hWnd, nullptr, bErase); }
    BOOL UpdateWindow() noexcept { return ::UpdateWindow(m_hWnd); }
    HDC BeginPaint(LPPAINTSTRUCT lpPaint) noexcept { return ::BeginPaint(m_hWnd, lpPaint); }
    void EndPaint(LPPAINTSTRUCT lpPaint) noexcept { ::EndPaint(m_hWnd, lpPaint); }

    LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) noexcept
    {
        return ::SendMessageW(m_hWnd, message, wParam, lParam);
    }
    BOOL PostMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) noexcept
    {
        return ::PostMessageW(m_hWnd, message, wParam, lParam);
    }

    HWND m_hWnd;
};

} // namespace ATL
