// Critical sections and the module's handles. Needs no COM.
#pragma once

#include "atl/atldef.h"
#include "atl/atlexcept.h"

namespace ATL {

// The owner calls Init before the first Lock and Term after the last Unlock.
class CComCriticalSection
{
public:
    constexpr CComCriticalSection() noexcept = default;
    CComCriticalSection(const CComCriticalSection&) = delete;
    CComCriticalSection& operator=(const CComCriticalSection&) = delete;

    HRESULT Init() noexcept
    {
        return InitializeCriticalSectionAndSpinCount(&m_sec, 0) ? S_OK : AtlHresultFromLastError();
    }
    HRESULT Term() noexcept
    {
        DeleteCriticalSection(&m_sec);
        return S_OK;
    }
    HRESULT Lock() noexcept
    {
        EnterCriticalSection(&m_sec);
        return S_OK;
    }
    HRESULT Unlock() noexcept
    {
        LeaveCriticalSection(&m_sec);
        return S_OK;
    }

    CRITICAL_SECTION m_sec{};
};

// Usable from construction to destruction.
class CComAutoCriticalSection : public CComCriticalSection
{
public:
    CComAutoCriticalSection()
    {
        const HRESULT hr = CComCriticalSection::Init();
        if (FAILED(hr))
            AtlThrow(hr);
    }
    ~CComAutoCriticalSection() { CComCriticalSection::Term(); }

private:
    HRESULT Init();
    HRESULT Term();
};

// Term is safe without Init: construction may fail before the section is initialised.
class CComSafeDeleteCriticalSection : public CComCriticalSection
{
public:
    ~CComSafeDeleteCriticalSection() { Term(); }

    HRESULT Init() noexcept
    {
        ATLASSERT(!m_bInitialized);
        const HRESULT hr = CComCriticalSection::Init();
        m_bInitialized = SUCCEEDED(hr);
        return hr;
    }
    HRESULT Term() noexcept
    {
        if (m_bInitialized) {
            m_bInitialized = false;
            CComCriticalSection::Term();
        }
        return S_OK;
    }
    HRESULT Lock() noexcept
    {
        ATLASSERT(m_bInitialized);
        return CComCriticalSection::Lock();
    }

private:
    bool m_bInitialized = false;
};

// Does nothing; for objects that are used on one thread only.
class CComFakeCriticalSection
{
public:
    HRESULT Lock() noexcept { return S_OK; }
    HRESULT Unlock() noexcept { return S_OK; }
    HRESULT Init() noexcept { return S_OK; }
    HRESULT Term() noexcept { return S_OK; }
};

template <class TLock>
class CComCritSecLock
{
public:
    explicit CComCritSecLock(TLock& cs, bool bInitialLock = true) : m_cs(cs)
    {
        if (bInitialLock)
            Lock();
    }
    ~CComCritSecLock()
    {
        if (m_bLocked)
            Unlock();
    }
    CComCritSecLock(const CComCritSecLock&) = delete;
    CComCritSecLock& operator=(const CComCritSecLock&) = delete;

    HRESULT Lock() noexcept
    {
        const HRESULT hr = m_cs.Lock();
        m_bLocked = SUCCEEDED(hr);
        return hr;
    }
    void Unlock() noexcept
    {
        m_cs.Unlock();
        m_bLocked = false;
    }

private:
    TLock& m_cs;
    bool m_bLocked = false;
};

// The module's instance handle and the module that its resources are loaded from.
class CAtlBaseModule
{
public:
    // Set when the framework could not be initialised; the module then refuses to load.
    static inline bool m_bInitFailed = false;

    HINSTANCE GetModuleInstance() const noexcept { return reinterpret_cast<HINSTANCE>(&__ImageBase); }
    HINSTANCE GetResourceInstance() const noexcept
    {
        return m_hInstResource ? m_hInstResource : GetModuleInstance();
    }
    HINSTANCE SetResourceInstance(HINSTANCE hInst) noexcept
    {
        const HINSTANCE previous = GetResourceInstance();
        m_hInstResource = hInst;
        return previous;
    }

private:
    HINSTANCE m_hInstResource = nullptr; // null: the module itself
};

constinit inline CAtlBaseModule _AtlBaseModule;

} // namespace ATL
