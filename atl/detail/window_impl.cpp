#include "atl/detail/window_impl.h"

#include "atl/atlbase.h"

namespace ATL {
namespace {

// Asked for each message: a property is a call to another process on some systems, the class and the extra
// bytes are not.
bool IsOfOwnClass(HWND hWnd) noexcept
{
    return reinterpret_cast<HINSTANCE>(GetClassLongPtrW(hWnd, GCLP_HMODULE)) ==
               _AtlBaseModule.GetModuleInstance() &&
           GetClassLongPtrW(hWnd, GCL_CBWNDEXTRA) == CWndClassInfo::extra_bytes;
}

void* StoredObject(HWND hWnd) noexcept
{
    if (IsOfOwnClass(hWnd))
        return reinterpret_cast<void*>(GetWindowLongPtrW(hWnd, 0));
    const LPCWSTR property = _AtlWinModule.ObjectProperty();
    return property ? GetPropW(hWnd, property) : nullptr;
}

bool StoreObject(HWND hWnd, void* object) noexcept
{
    if (IsOfOwnClass(hWnd)) {
        SetLastError(ERROR_SUCCESS);
        return SetWindowLongPtrW(hWnd, 0, reinterpret_cast<LONG_PTR>(object)) ||
               GetLastError() == ERROR_SUCCESS;
    }
    const LPCWSTR property = _AtlWinModule.ObjectProperty();
    if (!property)
        return false;
    if (object)
        return SetPropW(hWnd, property, object);
    RemovePropW(hWnd, property);
    return true;
}

LRESULT CallProcedure(WNDPROC procedure, HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept
{
    return procedure ? CallWindowProcW(procedure, hWnd, uMsg, wParam, lParam)
                     : ::DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

} // namespace

// Lives on the stack of the window procedure; tells it when a handler deleted the object.
struct CWindowImplRoot::Frame
{
    explicit Frame(CWindowImplRoot& object) noexcept : m_pObject(&object), m_pOuter(object.m_pFrame)
    {
        object.m_pFrame = this;
    }
    ~Frame()
    {
        if (m_pObject)
            m_pObject->m_pFrame = m_pOuter;
    }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    CWindowImplRoot* m_pObject; // null once deleted
    Frame* m_pOuter;
};

CWindowImplRoot::~CWindowImplRoot()
{
    for (Frame* frame = m_pFrame; frame; frame = frame->m_pOuter)
        frame->m_pObject = nullptr;
    const HWND hWnd = m_hWndLinked;
    if (!hWnd)
        return;
    Unlink();
    if (m_bCreated)
        ::DestroyWindow(hWnd);
}

void CWindowImplRoot::OnFinalMessage(HWND) {}

HWND CWindowImplRoot::CreateOfClass(CWndClassInfo& info, HWND hWndParent, LPCRECT rect, LPCWSTR szWindowName,
                                    DWORD dwStyle, DWORD dwExStyle, HMENU menu, void* lpCreateParam) noexcept
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
    // A hook may have refused the window before it got its first message.
    _AtlWinModule.RemoveCreateWndData(&data);
    // Members are not touched from here on: a failed creation ends with OnFinalMessage.
    if (hWnd && !FromWindow(hWnd)) {
        ::DestroyWindow(hWnd);
        return nullptr;
    }
    return hWnd;
}

BOOL CWindowImplRoot::SubclassWindow(HWND hWnd) noexcept
{
    if (m_hWndLinked || !::IsWindow(hWnd) || GetWindowThreadProcessId(hWnd, nullptr) != GetCurrentThreadId())
        return FALSE;
    if (const CWindowImplRoot* const lower = FromWindow(hWnd))
        return Link(hWnd, lower->m_pSuper);
    // Our procedure may be there already: left behind by an object that went away while somebody else's
    // procedure stood above it.
    const LPCWSTR property = _AtlWinModule.SuperProperty();
    if (const HANDLE super = property ? GetPropW(hWnd, property) : nullptr)
        return Link(hWnd, reinterpret_cast<WNDPROC>(super));
    const LONG_PTR super = GetWindowLongPtrW(hWnd, GWLP_WNDPROC);
    if (super == reinterpret_cast<LONG_PTR>(WindowProc))
        return Link(hWnd, nullptr);
    if (!property || !super || !SetPropW(hWnd, property, reinterpret_cast<HANDLE>(super)))
        return FALSE;
    if (!Link(hWnd, reinterpret_cast<WNDPROC>(super))) {
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
    Unlink();
    m_hWnd = nullptr;
    return hWnd;
}

LRESULT CWindowImplRoot::DefWindowProc(UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept
{
    return m_pLower ? m_pLower->Dispatch(uMsg, wParam, lParam)
                    : CallProcedure(m_pSuper, m_hWndLinked, uMsg, wParam, lParam);
}

LRESULT CALLBACK CWindowImplRoot::StartWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept
{
    auto* const object = static_cast<CWindowImplRoot*>(_AtlWinModule.ExtractCreateWndData());
    if (!object || !object->Link(hWnd, nullptr))
        return ::DefWindowProcW(hWnd, uMsg, wParam, lParam);
    object->m_bCreated = true;
    // From now on a message for this window never takes the object of another window being created.
    SetWindowLongPtrW(hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(WindowProc));
    return WindowProc(hWnd, uMsg, wParam, lParam);
}

LRESULT CALLBACK CWindowImplRoot::WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept
{
    CWindowImplRoot* const object = FromWindow(hWnd);
    const LRESULT result =
        object ? object->Dispatch(uMsg, wParam, lParam) : CallSuper(hWnd, uMsg, wParam, lParam);
    if (uMsg == WM_NCDESTROY)
        RemovePropW(hWnd, _AtlWinModule.SuperProperty());
    return result;
}

CWindowImplRoot* CWindowImplRoot::FromWindow(HWND hWnd) noexcept
{
    return static_cast<CWindowImplRoot*>(StoredObject(hWnd));
}

LRESULT CWindowImplRoot::CallSuper(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept
{
    const LPCWSTR property = _AtlWinModule.SuperProperty();
    const HANDLE super = property ? GetPropW(hWnd, property) : nullptr;
    return CallProcedure(reinterpret_cast<WNDPROC>(super), hWnd, uMsg, wParam, lParam);
}

bool CWindowImplRoot::Link(HWND hWnd, WNDPROC super) noexcept
{
    CWindowImplRoot* const lower = FromWindow(hWnd);
    if (!StoreObject(hWnd, this))
        return false;
    m_pLower = lower;
    m_pSuper = super;
    m_hWnd = m_hWndLinked = hWnd;
    m_bCreated = false;
    return true;
}

void CWindowImplRoot::Unlink() noexcept
{
    const HWND hWnd = m_hWndLinked;
    CWindowImplRoot* const top = FromWindow(hWnd);
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
    StoreObject(hWnd, lower);
    if (lower)
        return;
    // Somebody who replaced the procedure after us still calls ours: then it stays, and only passes on.
    const LPCWSTR super_property = _AtlWinModule.SuperProperty();
    const HANDLE super = GetPropW(hWnd, super_property);
    if (super && GetWindowLongPtrW(hWnd, GWLP_WNDPROC) == reinterpret_cast<LONG_PTR>(WindowProc)) {
        SetWindowLongPtrW(hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(super));
        RemovePropW(hWnd, super_property);
    }
}

LRESULT CWindowImplRoot::Dispatch(UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept
{
    const CComPtr<IUnknown> owner(GetMessageOwner());
    // A handler may destroy the window, and the object may have another one when the handler returns.
    const HWND hWnd = m_hWndLinked;
    LRESULT result = 0;
    {
        const Frame frame(*this);
        const bool handled = TryHandle(uMsg, wParam, lParam, result);
        if (!frame.m_pObject)
            return result;
        // The last message always goes on: objects below wait for it.
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
            Unlink();
            // At once, although outer handlers may still run: they ask for the handle to see whether there
            // is a window.
            if (m_hWnd == hWnd)
                m_hWnd = nullptr;
        }
    }
    if (m_hWndDestroyed && !m_pFrame)
        Finish();
    return result;
}

bool CWindowImplRoot::TryHandle(UINT uMsg, WPARAM wParam, LPARAM lParam, LRESULT& lResult) noexcept
{
    try {
        return ProcessWindowMessage(m_hWndLinked, uMsg, wParam, lParam, lResult, 0);
    } catch (...) {
        // Nothing may unwind through the system. A window that could not be set up is not created.
        lResult = uMsg == WM_CREATE ? -1 : 0;
        return true;
    }
}

void CWindowImplRoot::Finish() noexcept
{
    const HWND hWnd = m_hWndDestroyed;
    m_hWndDestroyed = nullptr;
    try {
        OnFinalMessage(hWnd);
    } catch (...) {
        return; // nothing may unwind through the system, and the window is gone
    }
}

} // namespace ATL
