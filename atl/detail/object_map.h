// The class-object map and the framework's COM module that keeps it.
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

// What changes of a map entry: the class factory, made when it is first asked for. Kept encoded, since a
// plain pointer to code in writable memory is what an attacker looks for.
struct _ATL_OBJMAP_CACHE
{
    std::atomic<PVOID> pCF = nullptr;
};

struct _ATL_OBJMAP_ENTRY_EX
{
    const CLSID* pclsid;
    _ATL_UPDATEREGISTRYFUNC* pfnUpdateRegistry;
    _ATL_CREATORFUNC* pfnGetClassObject; // null: the class cannot be created from outside
    _ATL_CREATORFUNC* pfnCreateInstance;
    _ATL_OBJMAP_CACHE* pCache;
    _ATL_CATMAPFUNC* pfnGetCategoryMap;
    _ATL_OBJECTMAINFUNC* pfnObjectMain;
};

namespace detail {

// The map: an array of pointers that the linker puts together from the ATL$__m sections of all object files,
// between these two in sections that sort before and after. An entry may be null.
extern const _ATL_OBJMAP_ENTRY_EX* const object_map_first;
extern const _ATL_OBJMAP_ENTRY_EX* const object_map_last;

} // namespace detail

// The module's class objects: created on demand, registered and unregistered together. The module object
// starts and ends it, since the order of construction between source files is nobody's choice.
class CAtlComModule
{
public:
    constexpr CAtlComModule() noexcept = default;
    CAtlComModule(const CAtlComModule&) = delete;
    CAtlComModule& operator=(const CAtlComModule&) = delete;

    HRESULT Init() noexcept;
    // Releases the cached class factories. Nothing can be created afterwards.
    void Term() noexcept;
    bool IsInitialized() const noexcept { return m_bInitialized; }

    // As DllGetClassObject.
    HRESULT GetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv) noexcept;
    // All classes in the map's order, or only the one given; then the type library of the module.
    // Registration stops at the first failure. Unregistration goes through to the end, so that it removes
    // all that it can, and returns the first failure.
    HRESULT RegisterServer(BOOL bRegTypeLib = FALSE, const CLSID* pCLSID = nullptr) noexcept;
    HRESULT UnregisterServer(BOOL bUnRegTypeLib = FALSE, const CLSID* pCLSID = nullptr) noexcept;
    // Tells every class that the module starts or ends.
    void ExecuteObjectMain(bool bStarting) noexcept;

    const _ATL_OBJMAP_ENTRY_EX* const* m_ppAutoObjMapFirst = &detail::object_map_first + 1;
    const _ATL_OBJMAP_ENTRY_EX* const* m_ppAutoObjMapLast = &detail::object_map_last;

private:
    std::span<const _ATL_OBJMAP_ENTRY_EX* const> entries() const noexcept;

    bool m_bInitialized = false;
    CComCriticalSection m_csObjMap;
};

constinit inline CAtlComModule _AtlComModule;

// Registers a class per user (true) or per machine, for the whole process.
ATLAPI AtlSetPerUserRegistration(bool bEnable) noexcept;
ATLAPI AtlGetPerUserRegistration(bool* pbEnabled) noexcept;

// Writes or removes the categories of a class beside the class's own key.
ATLAPI AtlRegisterClassCategoriesHelper(REFCLSID clsid, const _ATL_CATMAP_ENTRY* map,
                                        BOOL bRegister) noexcept;

} // namespace ATL
