// The class-object map and CAtlComModule, which owns the class factories.
#pragma once

#include "atl/atlcomcli.h"
#include "atl/atlcore.h"

#include <comcat.h>

#include <atomic>
#include <span>

namespace ATL {

using _ATL_CREATORFUNC = HRESULT WINAPI(void* pv, REFIID riid, LPVOID* ppv);
using _ATL_UPDATEREGISTRYFUNC = HRESULT WINAPI(BOOL bRegister);
using _ATL_OBJECTMAINFUNC = void WINAPI(bool bStarting);

// A category map ends with an entry of type _ATL_CATMAP_ENTRY_END.
inline constexpr int _ATL_CATMAP_ENTRY_END = 0;
inline constexpr int _ATL_CATMAP_ENTRY_IMPLEMENTED = 1;
inline constexpr int _ATL_CATMAP_ENTRY_REQUIRED = 2;

struct _ATL_CATMAP_ENTRY
{
    int iType;
    const CATID* pcatid;
};
using _ATL_CATMAPFUNC = const _ATL_CATMAP_ENTRY*();

// The mutable part of a map entry: the class factory, created on first use. Stored encoded: a plain object
// pointer in writable memory would be a target for exploits.
struct _ATL_OBJMAP_CACHE
{
    std::atomic<PVOID> pCF = nullptr;
};

struct _ATL_OBJMAP_ENTRY_EX
{
    const CLSID* pclsid;
    _ATL_UPDATEREGISTRYFUNC* pfnUpdateRegistry;
    _ATL_CREATORFUNC* pfnGetClassObject; // null: the class has no class factory
    _ATL_CREATORFUNC* pfnCreateInstance;
    _ATL_OBJMAP_CACHE* pCache;
    _ATL_CATMAPFUNC* pfnGetCategoryMap;
    _ATL_OBJECTMAINFUNC* pfnObjectMain;
};

namespace detail {

// The bounds of the map: the linker sorts the sections ATL$__a, ATL$__m and ATL$__z of all object files into
// one array of pointers. An entry may be null.
extern const _ATL_OBJMAP_ENTRY_EX* const object_map_first;
extern const _ATL_OBJMAP_ENTRY_EX* const object_map_last;

} // namespace detail

// The module's class objects: created on demand, registered and unregistered together. Initialised and
// terminated by the module object because the order of static initialisation is unspecified.
class CAtlComModule
{
public:
    constexpr CAtlComModule() noexcept = default;
    CAtlComModule(const CAtlComModule&) = delete;
    CAtlComModule& operator=(const CAtlComModule&) = delete;

    HRESULT Init() noexcept;
    // Releases the cached class factories. No object can be created afterwards.
    void Term() noexcept;
    bool IsInitialized() const noexcept { return m_bInitialized; }

    // Implements DllGetClassObject.
    HRESULT GetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv) noexcept;
    // Process all classes in map order, or only *pCLSID, and then the module's type library. Registration
    // stops at the first error. Unregistration continues, to remove as much as possible, and returns the
    // first error.
    HRESULT RegisterServer(BOOL bRegTypeLib = FALSE, const CLSID* pCLSID = nullptr) noexcept;
    HRESULT UnregisterServer(BOOL bUnRegTypeLib = FALSE, const CLSID* pCLSID = nullptr) noexcept;
    // Notifies every class that the module is loaded or unloaded.
    void ExecuteObjectMain(bool bStarting) noexcept;

    const _ATL_OBJMAP_ENTRY_EX* const* m_ppAutoObjMapFirst = &detail::object_map_first + 1;
    const _ATL_OBJMAP_ENTRY_EX* const* m_ppAutoObjMapLast = &detail::object_map_last;

private:
    std::span<const _ATL_OBJMAP_ENTRY_EX* const> entries() const noexcept;

    bool m_bInitialized = false;
    CComCriticalSection m_csObjMap;
};

constinit inline CAtlComModule _AtlComModule;

// Selects registration per user (true) or per machine, for the whole process.
ATLAPI AtlSetPerUserRegistration(bool bEnable) noexcept;
ATLAPI AtlGetPerUserRegistration(bool* pbEnabled) noexcept;

// Writes or removes the component categories under the class's CLSID key.
ATLAPI AtlRegisterClassCategoriesHelper(REFCLSID clsid, const _ATL_CATMAP_ENTRY* map,
                                        BOOL bRegister) noexcept;

} // namespace ATL
