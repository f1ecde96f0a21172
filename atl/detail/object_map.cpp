#include "atl/detail/object_map.h"

#include "atl/detail/handles.h"
#include "atl/detail/type_library.h"

#include <span>
#include <string>

namespace ATL {
namespace {

bool register_per_user = false;

std::wstring guid_text(REFGUID guid)
{
    OLECHAR text[39];
    StringFromGUID2(guid, text, ARRAYSIZE(text));
    return text;
}

// The class's CLSID key: under the user's classes if it is registered per user.
LSTATUS open_class_key(REFCLSID clsid, bool create, CRegKey& key)
{
    const std::wstring path = L"CLSID\\" + guid_text(clsid);
    if (register_per_user) {
        const LSTATUS status = key.Open(HKEY_CURRENT_USER, (L"Software\\Classes\\" + path).c_str());
        if (status != ERROR_FILE_NOT_FOUND)
            return status;
    }
    return create ? key.Create(HKEY_CLASSES_ROOT, path.c_str()) : key.Open(HKEY_CLASSES_ROOT, path.c_str());
}

const wchar_t* category_key_name(int type)
{
    return type == _ATL_CATMAP_ENTRY_IMPLEMENTED ? L"Implemented Categories" : L"Required Categories";
}

LSTATUS write_category(const CRegKey& class_key, const _ATL_CATMAP_ENTRY& entry)
{
    CRegKey categories;
    const LSTATUS status = categories.Create(class_key, category_key_name(entry.iType));
    CRegKey category;
    return status == ERROR_SUCCESS ? category.Create(categories, guid_text(*entry.pcatid).c_str()) : status;
}

LSTATUS remove_category(CRegKey& class_key, const _ATL_CATMAP_ENTRY& entry)
{
    CRegKey categories;
    LSTATUS status = categories.Open(class_key, category_key_name(entry.iType));
    if (status == ERROR_SUCCESS)
        status = categories.DeleteSubKey(guid_text(*entry.pcatid).c_str());
    DWORD subkeys = 0;
    if (status == ERROR_SUCCESS) {
        status = RegQueryInfoKeyW(categories, nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr);
    }
    if (status == ERROR_SUCCESS && subkeys == 0) {
        categories.Close();
        status = class_key.DeleteSubKey(category_key_name(entry.iType));
    }
    return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
}

HRESULT update_class(const _ATL_OBJMAP_ENTRY_EX& entry, BOOL registering)
{
    const _ATL_CATMAP_ENTRY* const categories = entry.pfnGetCategoryMap();
    if (registering) {
        const HRESULT hr = entry.pfnUpdateRegistry(TRUE);
        return SUCCEEDED(hr) ? AtlRegisterClassCategoriesHelper(*entry.pclsid, categories, TRUE) : hr;
    }
    const HRESULT hr = AtlRegisterClassCategoriesHelper(*entry.pclsid, categories, FALSE);
    const HRESULT script_hr = entry.pfnUpdateRegistry(FALSE);
    return FAILED(hr) ? hr : script_hr;
}

// Creates the class factory on first use (double-checked locking).
HRESULT ensure_factory(const _ATL_OBJMAP_ENTRY_EX& entry, CComCriticalSection& section)
{
    if (entry.pCache->pCF.load(std::memory_order_acquire))
        return S_OK;
    const CComCritSecLock lock(section);
    if (entry.pCache->pCF.load(std::memory_order_relaxed))
        return S_OK;
    void* factory = nullptr;
    const HRESULT hr =
        entry.pfnGetClassObject(reinterpret_cast<void*>(entry.pfnCreateInstance), IID_IUnknown, &factory);
    if (SUCCEEDED(hr) && factory)
        entry.pCache->pCF.store(EncodePointer(factory), std::memory_order_release);
    return hr;
}

IUnknown* decode_factory(PVOID encoded)
{
    return encoded ? static_cast<IUnknown*>(DecodePointer(encoded)) : nullptr;
}

} // namespace

namespace detail {

__attribute__((section("ATL$__a"), used)) const _ATL_OBJMAP_ENTRY_EX* const object_map_first = nullptr;
__attribute__((section("ATL$__z"), used)) const _ATL_OBJMAP_ENTRY_EX* const object_map_last = nullptr;

} // namespace detail

HRESULT CAtlComModule::Init() noexcept
{
    ATLASSERT(!m_bInitialized);
    const HRESULT hr = m_csObjMap.Init();
    m_bInitialized = SUCCEEDED(hr);
    return hr;
}

void CAtlComModule::Term() noexcept
{
    if (!m_bInitialized)
        return;
    m_bInitialized = false;
    for (auto* entry : entries()) {
        if (!entry)
            continue;
        if (IUnknown* const factory = decode_factory(entry->pCache->pCF.exchange(nullptr)))
            factory->Release();
    }
    m_csObjMap.Term();
}

std::span<const _ATL_OBJMAP_ENTRY_EX* const> CAtlComModule::entries() const noexcept
{
    return {m_ppAutoObjMapFirst, m_ppAutoObjMapLast};
}

HRESULT CAtlComModule::GetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv) noexcept
{
    if (!ppv)
        return E_POINTER;
    *ppv = nullptr;
    if (!m_bInitialized)
        return E_UNEXPECTED;
    HRESULT hr = S_OK;
    for (const auto* entry : entries()) {
        if (!entry || !entry->pfnGetClassObject || !IsEqualGUID(*entry->pclsid, rclsid))
            continue;
        hr = ensure_factory(*entry, m_csObjMap);
        if (IUnknown* const factory = decode_factory(entry->pCache->pCF.load(std::memory_order_acquire)))
            hr = factory->QueryInterface(riid, ppv);
        break;
    }
    return !*ppv && SUCCEEDED(hr) ? CLASS_E_CLASSNOTAVAILABLE : hr;
}

HRESULT CAtlComModule::RegisterServer(BOOL bRegTypeLib, const CLSID* pCLSID) noexcept
{
    for (const auto* entry : entries()) {
        if (!entry || (pCLSID && !IsEqualGUID(*pCLSID, *entry->pclsid)))
            continue;
        const HRESULT hr = update_class(*entry, TRUE);
        if (FAILED(hr))
            return hr;
    }
    return bRegTypeLib ? AtlRegisterTypeLib(_AtlBaseModule.GetResourceInstance(), nullptr) : S_OK;
}

HRESULT CAtlComModule::UnregisterServer(BOOL bUnRegTypeLib, const CLSID* pCLSID) noexcept
{
    HRESULT result = S_OK;
    for (const auto* entry : entries()) {
        if (!entry || (pCLSID && !IsEqualGUID(*pCLSID, *entry->pclsid)))
            continue;
        const HRESULT hr = update_class(*entry, FALSE);
        if (SUCCEEDED(result))
            result = hr;
    }
    if (bUnRegTypeLib) {
        const HRESULT hr = AtlUnRegisterTypeLib(_AtlBaseModule.GetResourceInstance(), nullptr);
        if (SUCCEEDED(result))
            result = hr;
    }
    return result;
}

void CAtlComModule::ExecuteObjectMain(bool bStarting) noexcept
{
    for (const auto* entry : entries()) {
        if (entry && entry->pfnObjectMain)
            entry->pfnObjectMain(bStarting);
    }
}

ATLAPI AtlSetPerUserRegistration(bool bEnable) noexcept
{
    register_per_user = bEnable;
    return S_OK;
}

ATLAPI AtlGetPerUserRegistration(bool* pbEnabled) noexcept
{
    if (!pbEnabled)
        return E_POINTER;
    *pbEnabled = register_per_user;
    return S_OK;
}

ATLAPI AtlRegisterClassCategoriesHelper(REFCLSID clsid, const _ATL_CATMAP_ENTRY* map, BOOL bRegister) noexcept
{
    if (!map || map->iType == _ATL_CATMAP_ENTRY_END)
        return S_OK;
    try {
        CRegKey class_key;
        LSTATUS status = open_class_key(clsid, bRegister, class_key);
        if (status == ERROR_FILE_NOT_FOUND && !bRegister)
            return S_OK;
        for (; status == ERROR_SUCCESS && map->iType != _ATL_CATMAP_ENTRY_END; ++map)
            status = bRegister ? write_category(class_key, *map) : remove_category(class_key, *map);
        return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
    } catch (...) {
        return AtlHresultFromException();
    }
}

} // namespace ATL
