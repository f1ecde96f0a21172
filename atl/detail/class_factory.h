// Class factories, CComCoClass and the entries of the class-object map.
#pragma once

#include "atl/detail/com_object.h"

namespace ATL {

// Creates objects with the creator function of its class.
class CComClassFactory : public IClassFactory, public CComObjectRootEx<CComGlobalsThreadModel>
{
public:
    BEGIN_COM_MAP(CComClassFactory)
    COM_INTERFACE_ENTRY(IClassFactory)
    END_COM_MAP()

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override
    {
        if (!ppv)
            return E_POINTER;
        *ppv = nullptr;
        // COM rule: an aggregating object may request IUnknown only.
        if (outer && !InlineIsEqualUnknown(riid))
            return CLASS_E_NOAGGREGATION;
        return m_pfnCreateInstance(outer, riid, ppv);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override
    {
        if (!_pAtlModule)
            return E_UNEXPECTED;
        if (lock)
            _pAtlModule->Lock();
        else
            _pAtlModule->Unlock();
        return S_OK;
    }

    // Called with the creator function when the factory is created.
    void SetVoid(void* pv) noexcept { m_pfnCreateInstance = reinterpret_cast<_ATL_CREATORFUNC*>(pv); }

    _ATL_CREATORFUNC* m_pfnCreateInstance = nullptr;
};

template <class T, const CLSID* pclsid = &CLSID_NULL>
class CComCoClass
{
public:
    using _ClassFactoryCreatorClass = CComCreator<CComObjectCached<CComClassFactory>>;

    static const CLSID& WINAPI GetObjectCLSID() noexcept { return *pclsid; }
    template <class Q>
    static HRESULT CreateInstance(IUnknown* outer, Q** out) noexcept
    {
        return T::_CreatorClass::CreateInstance(outer, __uuidof(Q), reinterpret_cast<void**>(out));
    }
    template <class Q>
    static HRESULT CreateInstance(Q** out) noexcept
    {
        return CreateInstance(nullptr, out);
    }
};

} // namespace ATL

#define DECLARE_CLASSFACTORY_EX(factory)                                                                     \
    using _ClassFactoryCreatorClass = ATL::CComCreator<ATL::CComObjectCached<factory>>;
#define DECLARE_CLASSFACTORY() DECLARE_CLASSFACTORY_EX(ATL::CComClassFactory)

// Adds a class to the module's map. Entries of one source file keep their order.
#define OBJECT_ENTRY_AUTO(clsid, class_name)                                                                 \
    static ATL::_ATL_OBJMAP_CACHE object_cache_##class_name;                                                 \
    static const ATL::_ATL_OBJMAP_ENTRY_EX object_entry_##class_name = {                                     \
        &clsid,                                                                                              \
        &class_name::UpdateRegistry,                                                                         \
        &class_name::_ClassFactoryCreatorClass::CreateInstance,                                              \
        &class_name::_CreatorClass::CreateInstance,                                                          \
        &object_cache_##class_name,                                                                          \
        &class_name::GetCategoryMap,                                                                         \
        &class_name::ObjectMain};                                                                            \
    __attribute__((section("ATL$__m"),                                                                       \
                   used)) static const ATL::_ATL_OBJMAP_ENTRY_EX* const object_pointer_##class_name =        \
        &object_entry_##class_name;
