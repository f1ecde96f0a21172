// The module's window classes and its data for windows being created.
#pragma once

#include <windows.h>

namespace ATL {

// The object of a window being created, until the first message provides the window handle.
struct _AtlCreateWndData
{
    void* m_pThis;
    DWORD m_dwThreadID;
    _AtlCreateWndData* m_pNext;
};

// One window class, registered for this module on first use.
struct CWndClassInfo
{
    // Window extra bytes: a pointer to the object.
    static constexpr int extra_bytes = sizeof(void*);

    // lpszName null: a unique name is generated. nBackground: a COLOR_ index, -1 for no brush.
    constexpr CWndClassInfo(LPCWSTR lpszName, UINT nStyle, int nBackground, WNDPROC pWndProc) noexcept
        : m_lpszName(lpszName), m_nStyle(nStyle), m_nBackground(nBackground), m_pWndProc(pWndProc)
    {
    }

    // Returns the class atom; 0 on failure, with the error in GetLastError.
    ATOM Register() noexcept;

    LPCWSTR m_lpszName;
    UINT m_nStyle;
    int m_nBackground;
    WNDPROC m_pWndProc;
    wchar_t m_szAutoName[32] = {};
    ATOM m_atom = 0;
    CWndClassInfo* m_pNext = nullptr;
};

// The module's window classes, the windows being created, and the atoms of the window properties.
// Thread-safe.
class CAtlWinModule
{
public:
    constexpr CAtlWinModule() noexcept = default;
    ~CAtlWinModule() { Term(); }
    CAtlWinModule(const CAtlWinModule&) = delete;
    CAtlWinModule& operator=(const CAtlWinModule&) = delete;

    // Unregisters every class, except one that still has windows. Called when the module is unloaded: the
    // system does not unregister a DLL's classes, and their window procedures are in the module. A class that
    // is used afterwards is registered again.
    void Term() noexcept;

    ATOM Register(CWndClassInfo& info) noexcept;
    // Unregisters one class. FALSE: it still has windows.
    BOOL Unregister(CWndClassInfo& info) noexcept;

    void AddCreateWndData(_AtlCreateWndData* pData, void* pObject) noexcept;
    // Removes and returns the object of the window that the calling thread most recently began to create;
    // null if there is none.
    void* ExtractCreateWndData() noexcept;
    // For a creation that failed before the first message.
    void RemoveCreateWndData(_AtlCreateWndData* pData) noexcept;

    // Names of the window properties for the object and for the replaced window procedure; null if no atom
    // is available.
    LPCWSTR object_property() noexcept { return property(m_objectAtom, L'o'); }
    LPCWSTR super_property() noexcept { return property(m_superAtom, L's'); }

private:
    static bool try_unregister(CWndClassInfo** link) noexcept;
    LPCWSTR property(ATOM& atom, wchar_t kind) noexcept;

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
