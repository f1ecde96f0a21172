// The module object: lock count, registration and the exports of an in-process server.
#pragma once

#include "atl/detail/object_map.h"
#include "atl/detail/thread_model.h"
#include "atl/statreg.h"

#include <memory>

namespace ATL {

// An extra replacement for a registry script. A list ends with an entry whose szKey is null.
struct _ATL_REGMAP_ENTRY
{
    LPCOLESTR szKey;
    LPCOLESTR szData;
};

class CAtlModule;
inline CAtlModule* _pAtlModule = nullptr;

class CAtlModule
{
public:
    // The type library named by DECLARE_LIBID, which is loaded from the module itself and needs no
    // registration.
    static inline GUID m_libid{};

    CAtlModule() noexcept;
    virtual ~CAtlModule();
    CAtlModule(const CAtlModule&) = delete;
    CAtlModule& operator=(const CAtlModule&) = delete;

    virtual LONG Lock() noexcept { return static_cast<LONG>(CComGlobalsThreadModel::Increment(&m_nLockCnt)); }
    virtual LONG Unlock() noexcept
    {
        return static_cast<LONG>(CComGlobalsThreadModel::Decrement(&m_nLockCnt));
    }
    virtual LONG GetLockCount() noexcept { return m_nLockCnt; }

    // Calls `function(data)` when the module is unloaded, in reverse order of registration.
    using _ATL_TERMFUNC = void __stdcall(DWORD_PTR data);
    HRESULT AddTermFunc(_ATL_TERMFUNC* function, DWORD_PTR data) noexcept;
    void Term() noexcept;

    // Adds replacements for all scripts of the module to the standard ones.
    virtual HRESULT AddCommonRGSReplacements(IRegistrarBase* registrar) noexcept = 0;

    // Applies a script resource of type REGISTRY. %Module% and %Module_Raw% are the module's path, %Module%
    // with apostrophes doubled for use in a quoted string.
    HRESULT UpdateRegistryFromResource(UINT resource, BOOL bRegister,
                                       const _ATL_REGMAP_ENTRY* entries = nullptr) noexcept;

    LONG m_nLockCnt = 0;

private:
    struct term_function
    {
        _ATL_TERMFUNC* function;
        DWORD_PTR data;
        term_function* next;
    };

    HRESULT prepare_registrar(const _ATL_REGMAP_ENTRY* entries);

    CComAutoCriticalSection m_csTermFunctions;
    term_function* m_termFunctions = nullptr;
    std::unique_ptr<CRegObject> m_registrar; // created on first use
};

template <class T>
class CAtlModuleT : public CAtlModule
{
public:
    CAtlModuleT() noexcept { T::InitLibId(); }

    static void InitLibId() noexcept {}
    static LPCOLESTR GetAppId() noexcept { return L""; }
    static HRESULT WINAPI UpdateRegistryAppId(BOOL) noexcept { return S_OK; }

    HRESULT RegisterAppId() noexcept { return T::UpdateRegistryAppId(TRUE); }
    HRESULT UnregisterAppId() noexcept { return T::UpdateRegistryAppId(FALSE); }
    HRESULT RegisterServer(BOOL bRegTypeLib = FALSE, const CLSID* pCLSID = nullptr) noexcept
    {
        return _AtlComModule.RegisterServer(bRegTypeLib, pCLSID);
    }
    HRESULT UnregisterServer(BOOL bUnRegTypeLib = FALSE, const CLSID* pCLSID = nullptr) noexcept
    {
        return _AtlComModule.UnregisterServer(bUnRegTypeLib, pCLSID);
    }
    HRESULT AddCommonRGSReplacements(IRegistrarBase*) noexcept override { return S_OK; }
};

// The module object of a DLL. Each public function implements the export of the same name.
template <class T>
class CAtlDllModuleT : public CAtlModuleT<T>
{
public:
    CAtlDllModuleT() noexcept
    {
        if (FAILED(_AtlComModule.Init()))
            CAtlBaseModule::m_bInitFailed = true;
        _AtlComModule.ExecuteObjectMain(true);
    }
    ~CAtlDllModuleT() override
    {
        _AtlComModule.ExecuteObjectMain(false);
        this->Term();
        _AtlComModule.Term();
    }

    BOOL WINAPI DllMain(DWORD reason, LPVOID) noexcept
    {
        return reason != DLL_PROCESS_ATTACH || !CAtlBaseModule::m_bInitFailed;
    }
    HRESULT DllCanUnloadNow() noexcept { return derived()->GetLockCount() == 0 ? S_OK : S_FALSE; }
    HRESULT DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv) noexcept
    {
        return GetClassObject(rclsid, riid, ppv);
    }
    HRESULT GetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv) noexcept
    {
        return _AtlComModule.GetClassObject(rclsid, riid, ppv);
    }
    HRESULT DllRegisterServer(BOOL bRegTypeLib = TRUE) noexcept
    {
        const neutral_locale locale;
        const HRESULT hr = derived()->RegisterAppId();
        return SUCCEEDED(hr) ? derived()->RegisterServer(bRegTypeLib) : hr;
    }
    HRESULT DllUnregisterServer(BOOL bUnRegTypeLib = TRUE) noexcept
    {
        const neutral_locale locale;
        const HRESULT hr = derived()->UnregisterServer(bUnRegTypeLib);
        return SUCCEEDED(hr) ? derived()->UnregisterAppId() : hr;
    }

private:
    // Registration converts numbers and type-library names: the result must not depend on the user's locale.
    class neutral_locale
    {
    public:
        neutral_locale() noexcept : previous_(GetThreadLocale()) { SetThreadLocale(LOCALE_SYSTEM_DEFAULT); }
        ~neutral_locale() { SetThreadLocale(previous_); }
        neutral_locale(const neutral_locale&) = delete;
        neutral_locale& operator=(const neutral_locale&) = delete;

    private:
        LCID previous_;
    };

    T* derived() noexcept { return static_cast<T*>(this); }
};

} // namespace ATL

// In the module class: the type library in the module's resources.
#define DECLARE_LIBID(libid)                                                                                 \
    static void InitLibId() noexcept                                                                         \
    {                                                                                                        \
        ATL::CAtlModule::m_libid = libid;                                                                    \
    }

// In the module class: its AppID and the script that registers it, in which %APPID% is the AppID.
#define DECLARE_REGISTRY_APPID_RESOURCEID(resource, app_id)                                                  \
    static LPCOLESTR GetAppId() noexcept                                                                     \
    {                                                                                                        \
        return OLESTR(app_id);                                                                               \
    }                                                                                                        \
    static HRESULT WINAPI UpdateRegistryAppId(BOOL bRegister) noexcept                                       \
    {                                                                                                        \
        const ATL::_ATL_REGMAP_ENTRY entries[] = {{OLESTR("APPID"), GetAppId()}, {nullptr, nullptr}};        \
        return ATL::_pAtlModule->UpdateRegistryFromResource(resource, bRegister, entries);                   \
    }

// In a COM class: the resource identifier of the script that registers it, or no script.
#define DECLARE_REGISTRY_RESOURCEID(resource)                                                                \
    static HRESULT WINAPI UpdateRegistry(BOOL bRegister) noexcept                                            \
    {                                                                                                        \
        return ATL::_pAtlModule->UpdateRegistryFromResource(resource, bRegister);                            \
    }
#define DECLARE_NO_REGISTRY()                                                                                \
    static HRESULT WINAPI UpdateRegistry(BOOL) noexcept                                                      \
    {                                                                                                        \
        return S_OK;                                                                                         \
    }
