// The base of every COM class: its reference count and lock.
#pragma once

#include "atl/detail/com_map.h"
#include "atl/detail/object_map.h"
#include "atl/detail/thread_model.h"

#include <climits>

namespace ATL {

class CComObjectRootBase
{
public:
    CComObjectRootBase() noexcept = default;
    CComObjectRootBase(const CComObjectRootBase&) = delete;
    CComObjectRootBase& operator=(const CComObjectRootBase&) = delete;

    // Called when the object is complete; creation fails with a failure of it.
    HRESULT FinalConstruct() noexcept { return S_OK; }
    // Called before the destructors, while the object is still complete.
    void FinalRelease() noexcept {}

    HRESULT _AtlFinalConstruct() noexcept { return S_OK; }
    void SetVoid(void*) noexcept {}
    void InternalFinalConstructAddRef() noexcept {}
    void InternalFinalConstructRelease() noexcept {}

    static void WINAPI ObjectMain(bool) noexcept {}
    static const _ATL_CATMAP_ENTRY* GetCategoryMap() noexcept { return nullptr; }

    // The count during destruction: an AddRef/Release pair inside it must not destroy the object again.
    static constexpr LONG destroyed_count = -(LONG_MAX / 2);

    LONG m_dwRef = 0;
};

template <class ThreadModel>
class CComObjectRootEx : public CComObjectRootBase
{
public:
    using _ThreadModel = ThreadModel;
    using _CritSec = typename ThreadModel::AutoCriticalSection;
    using _AutoDelCritSec = typename ThreadModel::AutoDeleteCriticalSection;
    using ObjectLock = CComCritSecLock<CComObjectRootEx>;

    HRESULT _AtlInitialConstruct() noexcept { return m_critsec.Init(); }
    ULONG InternalAddRef() noexcept
    {
        ATLASSERT(m_dwRef != -1);
        return ThreadModel::Increment(&m_dwRef);
    }
    ULONG InternalRelease() noexcept
    {
        ATLASSERT(m_dwRef != 0);
        return ThreadModel::Decrement(&m_dwRef);
    }
    HRESULT Lock() noexcept { return m_critsec.Lock(); }
    HRESULT Unlock() noexcept { return m_critsec.Unlock(); }

private:
    _AutoDelCritSec m_critsec;
};

} // namespace ATL

// For a class whose FinalConstruct passes references to itself to other code.
#define DECLARE_PROTECT_FINAL_CONSTRUCT()                                                                    \
    void InternalFinalConstructAddRef() noexcept                                                             \
    {                                                                                                        \
        this->InternalAddRef();                                                                              \
    }                                                                                                        \
    void InternalFinalConstructRelease() noexcept                                                            \
    {                                                                                                        \
        this->InternalRelease();                                                                             \
    }

#define DECLARE_GET_CONTROLLING_UNKNOWN()                                                                    \
    virtual IUnknown* GetControllingUnknown() noexcept                                                       \
    {                                                                                                        \
        return this->GetUnknown();                                                                           \
    }

// clang-format off
#define BEGIN_CATEGORY_MAP(class_name)                                                                       \
    static const ATL::_ATL_CATMAP_ENTRY* GetCategoryMap() noexcept                                           \
    {                                                                                                        \
        static const ATL::_ATL_CATMAP_ENTRY map[] = {
#define IMPLEMENTED_CATEGORY(catid) {ATL::_ATL_CATMAP_ENTRY_IMPLEMENTED, &catid},
#define REQUIRED_CATEGORY(catid) {ATL::_ATL_CATMAP_ENTRY_REQUIRED, &catid},
#define END_CATEGORY_MAP()                                                                                   \
            {ATL::_ATL_CATMAP_ENTRY_END, nullptr}};                                                          \
        return map;                                                                                          \
    }
// clang-format on
