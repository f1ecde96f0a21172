// Window classes of this module, and what the module keeps for its windows.
#pragma once

#include <windows.h>

namespace ATL {

// A window being created: its object, until the first message tells the window's handle.
struct _AtlCreateWndData
{
    void* m_pThis;
    DWORD m_dwThreadID;
    _AtlCreateWndData* m_pNext;
};

// One window class, registered for this module on first use.
struct CWndClassInfo
{
    // Of each window: a pointer to its object.
    static constexpr int extra_bytes = sizeof(void*);

    // lpszName null: a name of the module's own making. nBackground: a COLOR_ value, -1 for no brush.
    constexpr CWndClassInfo(LPCWSTR lpszName, UINT nStyle, int nBackground, WNDPROC pWndProc) noexcept
        : m_lpszName(lpszName), m_nStyle(nStyle), m_nBackground(nBackground), m_pWndProc(pWndProc)
    {
    }

    // The class's atom, 0 when it cannot be registered (GetLastError tells why).
    ATOM Register() noexcept;

    LPCWSTR m_lpszName;
    UINT m_nStyle;
    int m_nBackground;
    WNDPROC m_pWndProc;
    wchar_t m_szAutoName[32] = {};
    ATOM m_atom = 0;
    CWndClassInfo* m_pNext = nullptr;
};

// The module's window classes, the windows it is creating, and the atoms that its windows' objects are
// kept under. May be used from several threads.
class CAtlWinModule
{
public:
    constexpr CAtlWinModule() noexcept = default;
    ~CAtlWinModule() { Term(); }
    CAtlWinModule(const CAtlWinModule&) = delete;
    CAtlWinModule& operator=(const CAtlWinModule&) = delete;

    // Unregisters every class. A class belongs to the process and points into the module's code, so the
    // module calls this when it unloads; a class that still has windows stays. Classes used again
    // afterwards are registered again.
    void Term() noexcept;

    ATOM Register(CWndClassInfo& info) noexcept;
    // One class only. FALSE: it still has windows.
    BOOL Unregister(CWndClassInfo& info) noexcept;

    void AddCreateWndData(_AtlCreateWndData* pData, void* pObject) noexcept;
    // The object of the window that the calling thread began to create last, null when there is none.
    void* ExtractCreateWndData() noexcept;
    // For a creation that ended before any message came.
    void RemoveCreateWndData(_AtlCreateWndData* pData) noexcept;

    // Names of the window properties for the object and for the replaced window procedure; null when the
    // system has no atom left.
    LPCWSTR ObjectProperty() noexcept { return Property(m_objectAtom, L'o'); }
    LPCWSTR SuperProperty() noexcept { return Property(m_superAtom, L's'); }

private:
    static bool TryUnregister(CWndClassInfo** link) noexcept;
    LPCWSTR Property(ATOM& atom, wchar_t kind) noexcept;

    SRWLOCK m_lock = SRWLOCK_INIT;
    CWndClassInfo* m_pClasses = nullptr;
    _AtlCreateWndData* m_pCreating = nullptr;
    ATOM m_objectAtom = 0;
    ATOM m_superAtom = 0;
};

extern CAtlWinModule _AtlWinModule;

} // namespace ATL

#define DECLARE_WND_CLASS_EX(WndClassName, style, bkgnd)                                                     \
    static ATL::CWndClassInfo& GetWndClassInfo()                                                             \
    {                                                                                                        \
        static constinit ATL::CWndClassInfo info(WndClassName, style, bkgnd,                                 \
                                                 ATL::CWindowImplRoot::StartWindowProc);                     \
        return info;                                                                                         \
    }

#define DECLARE_WND_CLASS(WndClassName)                                                                      \
    DECLARE_WND_CLASS_EX(WndClassName, CS_HREDRAW | CS_VREDRAW | CS_DBLCLKS, COLOR_WINDOW)
