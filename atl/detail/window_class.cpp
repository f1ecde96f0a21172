#include "atl/detail/window_class.h"

#include "atl/atlbase.h"

#include <cwchar>

namespace ATL {
namespace {

class exclusive
{
public:
    explicit exclusive(SRWLOCK& lock) noexcept : lock_(lock) { AcquireSRWLockExclusive(&lock_); }
    ~exclusive() { ReleaseSRWLockExclusive(&lock_); }
    exclusive(const exclusive&) = delete;
    exclusive& operator=(const exclusive&) = delete;

private:
    SRWLOCK& lock_;
};

} // namespace

constinit CAtlWinModule _AtlWinModule;

ATOM CWndClassInfo::Register() noexcept
{
    return _AtlWinModule.Register(*this);
}

ATOM CAtlWinModule::Register(CWndClassInfo& info) noexcept
{
    const exclusive guard(m_lock);
    if (info.m_atom)
        return info.m_atom;
    if (!info.m_lpszName) {
        // The address of `info` makes the name unique in the process.
        std::swprintf(info.m_szAutoName, std::size(info.m_szAutoName), L"ATL:%p", static_cast<void*>(&info));
        info.m_lpszName = info.m_szAutoName;
    }
    WNDCLASSEXW wc{};
    wc.cbSize = sizeof wc;
    wc.style = info.m_nStyle;
    wc.lpfnWndProc = info.m_pWndProc;
    wc.cbWndExtra = CWndClassInfo::extra_bytes;
    wc.hInstance = _AtlBaseModule.GetModuleInstance();
    wc.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    if (info.m_nBackground != -1)
        wc.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(info.m_nBackground) + 1);
    wc.lpszClassName = info.m_lpszName;
    info.m_atom = RegisterClassExW(&wc);
    if (info.m_atom) {
        info.m_pNext = m_pClasses;
        m_pClasses = &info;
    }
    return info.m_atom;
}

bool CAtlWinModule::try_unregister(CWndClassInfo** link) noexcept
{
    CWndClassInfo* const info = *link;
    if (!UnregisterClassW(MAKEINTATOM(info->m_atom), _AtlBaseModule.GetModuleInstance()))
        return false;
    *link = info->m_pNext;
    info->m_pNext = nullptr;
    info->m_atom = 0;
    return true;
}

BOOL CAtlWinModule::Unregister(CWndClassInfo& info) noexcept
{
    const exclusive guard(m_lock);
    for (CWndClassInfo** link = &m_pClasses; *link; link = &(*link)->m_pNext) {
        if (*link == &info)
            return try_unregister(link);
    }
    return TRUE;
}

void CAtlWinModule::Term() noexcept
{
    const exclusive guard(m_lock);
    for (CWndClassInfo** link = &m_pClasses; *link;) {
        if (!try_unregister(link))
            link = &(*link)->m_pNext;
    }
    if (m_pClasses)
        return; // remaining windows still use the property names
    for (ATOM* const atom : {&m_objectAtom, &m_superAtom}) {
        if (*atom)
            GlobalDeleteAtom(*atom);
        *atom = 0;
    }
}

void CAtlWinModule::AddCreateWndData(_AtlCreateWndData* pData, void* pObject) noexcept
{
    const exclusive guard(m_lock);
    pData->m_pThis = pObject;
    pData->m_dwThreadID = GetCurrentThreadId();
    pData->m_pNext = m_pCreating;
    m_pCreating = pData;
}

void* CAtlWinModule::ExtractCreateWndData() noexcept
{
    const exclusive guard(m_lock);
    const DWORD thread = GetCurrentThreadId();
    for (_AtlCreateWndData** link = &m_pCreating; *link; link = &(*link)->m_pNext) {
        if ((*link)->m_dwThreadID != thread)
            continue;
        void* const object = (*link)->m_pThis;
        *link = (*link)->m_pNext;
        return object;
    }
    return nullptr;
}

void CAtlWinModule::RemoveCreateWndData(_AtlCreateWndData* pData) noexcept
{
    const exclusive guard(m_lock);
    for (_AtlCreateWndData** link = &m_pCreating; *link; link = &(*link)->m_pNext) {
        if (*link == pData) {
            *link = pData->m_pNext;
            return;
        }
    }
}

LPCWSTR CAtlWinModule::property(ATOM& atom, wchar_t kind) noexcept
{
    const exclusive guard(m_lock);
    if (!atom) {
        wchar_t name[40];
        std::swprintf(name, std::size(name), L"ATL:%lc:%p", static_cast<wint_t>(kind),
                      static_cast<void*>(this));
        atom = GlobalAddAtomW(name);
    }
    return atom ? MAKEINTATOM(atom) : nullptr;
}

} // namespace ATL
