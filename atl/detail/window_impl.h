// CWindowImpl: an object with a window, whose messages go through the object's message map.
// There are no thunks: one window procedure finds the object in the window's extra bytes or, for a window of
// another class, in a window property. Several objects may subclass one window; the latest one receives a
// message first and forwards what it does not handle.
#pragma once

#include "atl/detail/message_map.h"
#include "atl/detail/window.h"
#include "atl/detail/window_class.h"

#include <windows.h>

#include <unknwn.h>

namespace ATL {

template <DWORD t_dwStyle = 0, DWORD t_dwExStyle = 0>
class CWinTraits
{
public:
    static DWORD GetWndStyle(DWORD dwStyle) noexcept { return dwStyle ? dwStyle : t_dwStyle; }
    static DWORD GetWndExStyle(DWORD dwExStyle) noexcept { return dwExStyle ? dwExStyle : t_dwExStyle; }
};

using CControlWinTraits = CWinTraits<WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, 0>;
using CNullTraits = CWinTraits<>;

// The class-independent part. Use on the window's thread only.
class CWindowImplRoot : public CWindow, public CMessageMap
{
public:
    CWindowImplRoot() noexcept = default;
    CWindowImplRoot(const CWindowImplRoot&) = delete;
    CWindowImplRoot& operator=(const CWindowImplRoot&) = delete;
    // Detaches from the window, and destroys it if Create made it. Handlers no longer run at that point: a
    // class that handles WM_DESTROY must destroy the window earlier.
    virtual ~CWindowImplRoot();

    // Called last for a window, when none of its messages is being handled any more. May delete the object.
    virtual void OnFinalMessage(HWND hWnd);

    // Unlike CWindow's: m_hWnd is cleared with the window's last message, and the object may be deleted when
    // this returns.
    BOOL DestroyWindow() noexcept { return ::DestroyWindow(m_hWnd); }

    // Attaches the object to an existing window of the calling thread. FALSE: nothing has changed.
    BOOL SubclassWindow(HWND hWnd) noexcept;
    // Detaches the object; returns the window, or null if there was none.
    HWND UnsubclassWindow() noexcept;

    // Calls the next object on the window, or the window's original procedure.
    LRESULT DefWindowProc(UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept;

    // The window procedure of the module's classes for a window's first message.
    static LRESULT CALLBACK StartWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept;

protected:
    // The COM object to reference while a message is handled: a host may release a control inside its
    // message handler. Null for objects without a reference count.
    virtual IUnknown* message_owner() noexcept { return nullptr; }

    // Returns the new window, or null. The object may be deleted if creation fails.
    HWND create_of_class(CWndClassInfo& info, HWND hWndParent, LPCRECT rect, LPCWSTR szWindowName,
                         DWORD dwStyle, DWORD dwExStyle, HMENU menu, void* lpCreateParam) noexcept;

private:
    struct message_frame; // one message being handled

    static LRESULT CALLBACK WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept;
    static CWindowImplRoot* from_window(HWND hWnd) noexcept;
    static LRESULT call_super(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept;

    bool link(HWND hWnd, WNDPROC super) noexcept;
    void unlink() noexcept;
    LRESULT dispatch(UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept;
    bool try_handle(UINT uMsg, WPARAM wParam, LPARAM lParam, LRESULT& lResult) noexcept;
    void finish() noexcept;

    CWindowImplRoot* m_pLower = nullptr; // the object below this one on the same window
    message_frame* m_pFrame = nullptr;   // innermost message being handled
    HWND m_hWndDestroyed = nullptr;      // window whose OnFinalMessage is pending
    // The attached window. Separate from m_hWnd, which a class may clear while the window is being
    // destroyed.
    HWND m_hWndLinked = nullptr;
    WNDPROC m_pSuper = nullptr; // the original window procedure; null for the module's own classes
    bool m_bCreated = false;    // by Create, not attached by SubclassWindow
};

template <class T, class TBase = CWindow, class TWinTraits = CControlWinTraits>
class CWindowImpl : public CWindowImplRoot
{
public:
    DECLARE_WND_CLASS(nullptr)

    static DWORD GetWndStyle(DWORD dwStyle) noexcept { return TWinTraits::GetWndStyle(dwStyle); }
    static DWORD GetWndExStyle(DWORD dwExStyle) noexcept { return TWinTraits::GetWndExStyle(dwExStyle); }

    HWND Create(HWND hWndParent, _U_RECT rect = static_cast<LPRECT>(nullptr), LPCWSTR szWindowName = nullptr,
                DWORD dwStyle = 0, DWORD dwExStyle = 0, _U_MENUorID MenuOrID = 0U,
                LPVOID lpCreateParam = nullptr) noexcept
    {
        return create_of_class(T::GetWndClassInfo(), hWndParent, rect.m_lpRect, szWindowName,
                               T::GetWndStyle(dwStyle), T::GetWndExStyle(dwExStyle), MenuOrID.m_hMenu,
                               lpCreateParam);
    }
};

} // namespace ATL
