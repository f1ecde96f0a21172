// CWindowImpl: an object with a window, its messages going through the object's message map.
// No executable memory is made: one window procedure finds the object in the window's extra bytes, or through
// a property of a window that is not of the module's classes. Several objects may sit on one window
// (SubclassWindow); the last one comes first and passes on what it leaves.
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

// What does not depend on the object's class. Used on the thread that owns the window.
class CWindowImplRoot : public CWindow, public CMessageMap
{
public:
    CWindowImplRoot() noexcept = default;
    CWindowImplRoot(const CWindowImplRoot&) = delete;
    CWindowImplRoot& operator=(const CWindowImplRoot&) = delete;
    // Leaves the window it sits on, and destroys it when Create made it. No handler runs any more then,
    // so whoever needs WM_DESTROY destroys the window earlier.
    virtual ~CWindowImplRoot();

    // The last call for a window, when no message of it is being handled any more. May delete the object.
    virtual void OnFinalMessage(HWND hWnd);

    // Unlike CWindow's: the handle is forgotten with the window's last message, and the object may be gone
    // when this returns.
    BOOL DestroyWindow() noexcept { return ::DestroyWindow(m_hWnd); }

    // Puts the object on an existing window of the calling thread. FALSE: nothing has changed.
    BOOL SubclassWindow(HWND hWnd) noexcept;
    // Takes it off again; returns the window, null when there was none.
    HWND UnsubclassWindow() noexcept;

    // What the next object on the window, or its class, does with a message.
    LRESULT DefWindowProc(UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept;

    // Window procedure of the module's classes until the first message of a window.
    static LRESULT CALLBACK StartWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept;

protected:
    // The COM object to keep alive while a message is handled: a host may release a control from inside
    // its message handler. Null for objects that are not counted.
    virtual IUnknown* GetMessageOwner() noexcept { return nullptr; }

    // The new window, or null. The object may be deleted when creation failed on the way.
    HWND CreateOfClass(CWndClassInfo& info, HWND hWndParent, LPCRECT rect, LPCWSTR szWindowName,
                       DWORD dwStyle, DWORD dwExStyle, HMENU menu, void* lpCreateParam) noexcept;

private:
    struct Frame; // one message being handled

    static LRESULT CALLBACK WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept;
    static CWindowImplRoot* FromWindow(HWND hWnd) noexcept;
    static LRESULT CallSuper(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept;

    bool Link(HWND hWnd, WNDPROC super) noexcept;
    void Unlink() noexcept;
    LRESULT Dispatch(UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept;
    bool TryHandle(UINT uMsg, WPARAM wParam, LPARAM lParam, LRESULT& lResult) noexcept;
    void Finish() noexcept;

    CWindowImplRoot* m_pLower = nullptr; // the object below this one on the same window
    Frame* m_pFrame = nullptr;           // innermost message being handled
    HWND m_hWndDestroyed = nullptr;      // window whose OnFinalMessage is still to come
    // The window it sits on. Apart from m_hWnd, which a class may forget while the window is still on its
    // way down.
    HWND m_hWndLinked = nullptr;
    WNDPROC m_pSuper = nullptr; // what the window had before any object; null for one of the module's classes
    bool m_bCreated = false;    // by Create, not subclassed
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
        return CreateOfClass(T::GetWndClassInfo(), hWndParent, rect.m_lpRect, szWindowName,
                             T::GetWndStyle(dwStyle), T::GetWndExStyle(dwExStyle), MenuOrID.m_hMenu,
                             lpCreateParam);
    }
};

} // namespace ATL
