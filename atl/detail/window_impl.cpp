#include "atl/detail/window_impl.h"

#include "atl/atlbase.h"

namespace ATL {
namespace {

// Called for every message. The class and the extra bytes are cheaper to read than a property, which some
// systems keep in another process.
bool is_own_class(HWND hWnd) noexcept
{
    return reinterpret_cast<HINSTANCE>(GetClassLongPtrW(hWnd, GCLP_HMODULE)) ==
               _AtlBaseModule.GetModuleInstance() &&
           GetClassLongPtrW(hWnd, GCL_CBWNDEXTRA) == CWndClassInfo::extra_bytes;
}

void* stored_object(HWND hWnd) noexcept
{
    if (is_own_class(hWnd))
        return reinterpret_cast<void*>(GetWindowLongPtrW(hWnd, 0));
    const LPCWSTR property = _AtlWinModule.object_property();
    return property ? GetPropW(hWnd, property) : nullptr;
}

bool store_object(HWND hWnd, void* object) noexcept
{
    if (is_own_class(hWnd)) {
        SetLastError(ERROR_SUCCESS);
        return SetWindowLongPtrW(hWnd, 0, reinterpret_cast<LONG_PTR>(object)) ||
               GetLastError() == ERROR_SUCCESS;
    }
    const LPCWSTR property = _AtlWinModule.object_property();
    if (!property)
        return false;
    if (object)
        return SetPropW(hWnd, property, object);
    RemovePropW(hWnd, property);
    return true;
}

LRESULT call_procedure(WNDPROC procedure, HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept
{
    return procedure ? CallWindowProcW(procedure, hWnd, uMsg, wParam, lParam)
                     : ::DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

} // namespace

// On the stack of the window procedure, one for each nested message: detects that a handler has deleted the
// object.
struct CWindowImplRoot::message_frame
{
    explicit message_frame(CWindowImplRoot& object) noexcept : m_pObject(&object), m_pOuter(object.m_pFrame)
    {
        object.m_pFrame = this;
    }
    ~message_frame()
    {
        if (m_pObject)
            m_pObject->m_pFrame = m_pOuter;
    }
    message_frame(const message_frame&) = delete;
    message_frame& operator=(const message_frame&) = delete;

    CWindowImplRoot* m_pObject; // null once deleted
    message_frame* m_pOuter;
};

CWindowImplRoot::~CWindowImplRoot()
{
    for (message_frame* frame = m_pFrame; frame; frame = frame->m_pOuter)
        frame->m_pObject = nullptr;
    const HWND hWnd = m_hWndLinked;
    if (!hWnd)
        return;
    unlink();
    if (m_bCreated)
        ::DestroyWindow(hWnd);
}

void CWindowImplRoot::OnFinalMessage(HWND) {}

HWND CWindowImplRoot::create_of_class(CWndClassInfo& info, HWND hWndParent, LPCRECT rect,
                                      LPCWSTR szWindowName, DWORD dwStyle, DWORD dwExStyle, HMENU menu,
                                      void* lpCreateParam) noexcept
{
    const ATOM atom = info.Register();
    if (!atom || m_hWndLinked)
        return nullptr;
    static constexpr RECT default_rect{CW_USEDEFAULT, CW_USEDEFAULT, 0, 0};
    if (!rect)
        rect = &default_rect;
    const bool placed = rect->left != CW_USEDEFAULT;
    _AtlCreateWndData data{};
    _AtlWinModule.AddCreateWndData(&data, this);
    const HWND hWnd =
        CreateWindowExW(dwExStyle, MAKEINTATOM(atom), szWindowName, dwStyle, rect->left, rect->top,
                        placed ? detail::extent(rect->left, rect->right) : CW_USEDEFAULT,
                        placed ? detail::extent(rect->top, rect->bottom) : CW_USEDEFAULT, hWndParent, menu,
                        _AtlBaseModule.GetModuleInstance(), lpCreateParam);
    // A hook may have prevented the creation before the first message.
    _AtlWinModule.RemoveCreateWndData(&data);
    // Do not access members from here on: OnFinalMessage of a failed creation may have deleted the object.
    if (hWnd && !from_window(hWnd)) {
        ::DestroyWindow(hWnd);
        return nullptr;
    }
    return hWnd;
}

BOOL CWindowImplRoot::SubclassWindow(HWND hWnd) noexcept
{
    if (m_hWndLinked || !::IsWindow(hWnd) || GetWindowThreadProcessId(hWnd, nullptr) != GetCurrentThreadId())
        return FALSE;
    if (const CWindowImplRoot* const lower = from_window(hWnd))
        return link(hWnd, lower->m_pSuper);
    // The window may already use WindowProc: an earlier object could not remove it while another subclass
    // was installed above it.
    const LPCWSTR property = _AtlWinModule.super_property();
    if (const HANDLE super = property ? GetPropW(hWnd, property) : nullptr)
        return link(hWnd, reinterpret_cast<WNDPROC>(super));
    const LONG_PTR super = GetWindowLongPtrW(hWnd, GWLP_WNDPROC);
    if (super == reinterpret_cast<LONG_PTR>(WindowProc))
        return link(hWnd, nullptr);
    if (!property || !super || !SetPropW(hWnd, property, reinterpret_cast<HANDLE>(super)))
        return FALSE;
    if (!link(hWnd, reinterpret_cast<WNDPROC>(super))) {
        RemovePropW(hWnd, property);
        return FALSE;
    }
    SetWindowLongPtrW(hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(WindowProc));
    return TRUE;
}

HWND CWindowImplRoot::UnsubclassWindow() noexcept
{
    const HWND hWnd = m_hWndLinked;
    if (!hWnd)
        return nullptr;
    unlink();
    m_hWnd = nullptr;
    return hWnd;
}

LRESULT CWindowImplRoot::DefWindowProc(UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept
{
    return m_pLower ? m_pLower->dispatch(uMsg, wParam, lParam)
                    : call_procedure(m_pSuper, m_hWndLinked, uMsg, wParam, lParam);
}

LRESULT CALLBACK CWindowImplRoot::StartWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept
{
    auto* const object = static_cast<CWindowImplRoot*>(_AtlWinModule.ExtractCreateWndData());
    if (!object || !object->link(hWnd, nullptr))
        return ::DefWindowProcW(hWnd, uMsg, wParam, lParam);
    object->m_bCreated = true;
    // Later messages must not extract the object of another window being created.
    SetWindowLongPtrW(hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(WindowProc));
    return WindowProc(hWnd, uMsg, wParam, lParam);
}

LRESULT CALLBACK CWindowImplRoot::WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept
{
    CWindowImplRoot* const object = from_window(hWnd);
    const LRESULT result =
        object ? object->dispatch(uMsg, wParam, lParam) : call_super(hWnd, uMsg, wParam, lParam);
    if (uMsg == WM_NCDESTROY)
        RemovePropW(hWnd, _AtlWinModule.super_property());
    return result;
}

CWindowImplRoot* CWindowImplRoot::from_window(HWND hWnd) noexcept
{
    return static_cast<CWindowImplRoot*>(stored_object(hWnd));
}

LRESULT CWindowImplRoot::call_super(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept
{
    const LPCWSTR property = _AtlWinModule.super_property();
    const HANDLE super = property ? GetPropW(hWnd, property) : nullptr;
    return call_procedure(reinterpret_cast<WNDPROC>(super), hWnd, uMsg, wParam, lParam);
}

bool CWindowImplRoot::link(HWND hWnd, WNDPROC super) noexcept
{
    CWindowImplRoot* const lower = from_window(hWnd);
    if (!store_object(hWnd, this))
        return false;
    m_pLower = lower;
    m_pSuper = super;
    m_hWnd = m_hWndLinked = hWnd;
    m_bCreated = false;
    return true;
}

void CWindowImplRoot::unlink() noexcept
{
    const HWND hWnd = m_hWndLinked;
    CWindowImplRoot* const top = from_window(hWnd);
    CWindowImplRoot* const lower = m_pLower;
    m_hWndLinked = nullptr;
    m_pLower = nullptr;
    m_pSuper = nullptr;
    if (top != this) {
        for (CWindowImplRoot* above = top; above; above = above->m_pLower) {
            if (above->m_pLower == this)
                above->m_pLower = lower;
        }
        return;
    }
    store_object(hWnd, lower);
    if (lower)
        return;
    // A subclass installed later still calls WindowProc, which then stays and only forwards messages.
    const LPCWSTR super_property = _AtlWinModule.super_property();
    const HANDLE super = GetPropW(hWnd, super_property);
    if (super && GetWindowLongPtrW(hWnd, GWLP_WNDPROC) == reinterpret_cast<LONG_PTR>(WindowProc)) {
        SetWindowLongPtrW(hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(super));
        RemovePropW(hWnd, super_property);
    }
}

LRESULT CWindowImplRoot::dispatch(UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept
{
    const CComPtr<IUnknown> owner(message_owner());
    // A handler may destroy the window, and the object may have a new window when it returns.
    const HWND hWnd = m_hWndLinked;
    LRESULT result = 0;
    {
        const message_frame frame(*this);
        const bool handled = try_handle(uMsg, wParam, lParam, result);
        if (!frame.m_pObject)
            return result;
        // WM_NCDESTROY is always forwarded: the objects below must see it.
        if (!handled || uMsg == WM_NCDESTROY) {
            if (m_hWndLinked == hWnd) {
                const LRESULT super_result = DefWindowProc(uMsg, wParam, lParam);
                if (!handled)
                    result = super_result;
            }
            if (!frame.m_pObject)
                return result;
        }
        if (uMsg == WM_NCDESTROY && m_hWndLinked == hWnd) {
            m_hWndDestroyed = hWnd;
            unlink();
            // Cleared at once: outer handlers, which may still run, check m_hWnd for whether a window exists.
            if (m_hWnd == hWnd)
                m_hWnd = nullptr;
        }
    }
    if (m_hWndDestroyed && !m_pFrame)
        finish();
    return result;
}

bool CWindowImplRoot::try_handle(UINT uMsg, WPARAM wParam, LPARAM lParam, LRESULT& lResult) noexcept
{
    try {
        return ProcessWindowMessage(m_hWndLinked, uMsg, wParam, lParam, lResult, 0);
    } catch (...) {
        // An exception must not unwind through system frames. A failed WM_CREATE cancels the creation.
        lResult = uMsg == WM_CREATE ? -1 : 0;
        return true;
    }
}

void CWindowImplRoot::finish() noexcept
{
    const HWND hWnd = m_hWndDestroyed;
    m_hWndDestroyed = nullptr;
    try {
        OnFinalMessage(hWnd);
    } catch (...) {
        return; // an exception must not unwind through system frames
    }
}

} // namespace ATL
