// Interface maps: the interfaces that a class exposes through QueryInterface, in order.
#pragma once

#include "atl/atlcomcli.h"

namespace ATL {

using _ATL_CREATORARGFUNC = HRESULT WINAPI(void* pv, REFIID riid, LPVOID* ppv, DWORD_PTR dw);

// Either `pfnCast` returns the interface of the object, or `pFunc` resolves it. A null `piid` matches every
// interface. Both functions null: end of the map.
struct _ATL_INTMAP_ENTRY
{
    const IID* piid;
    IUnknown* (*pfnCast)(void* pv) noexcept;
    _ATL_CREATORARGFUNC* pFunc;
    DWORD_PTR dw;
};

// `Through` names the base class when the interface is inherited more than once.
template <class Class, class Interface, class Through = Interface>
IUnknown* _AtlMapCast(void* pv) noexcept
{
    return static_cast<Interface*>(static_cast<Through*>(static_cast<Class*>(pv)));
}

// The first entry also serves IUnknown, so it must have a pfnCast.
inline HRESULT WINAPI AtlInternalQueryInterface(void* pv, const _ATL_INTMAP_ENTRY* entries, REFIID riid,
                                                LPVOID* ppv) noexcept
{
    if (!ppv)
        return E_POINTER;
    *ppv = nullptr;
    ATLASSERT(pv && entries && entries->pfnCast);
    const bool identity = InlineIsEqualUnknown(riid);
    for (const _ATL_INTMAP_ENTRY* entry = entries; entry->pfnCast || entry->pFunc; ++entry) {
        const bool blind = !entry->piid;
        if (!identity && !blind && !IsEqualGUID(*entry->piid, riid))
            continue;
        if (entry->pfnCast) {
            IUnknown* const found = entry->pfnCast(pv);
            found->AddRef();
            *ppv = found;
            return S_OK;
        }
        const HRESULT hr = entry->pFunc(pv, riid, ppv, entry->dw);
        if (hr == S_OK || (!blind && FAILED(hr)))
            return hr;
        *ppv = nullptr;
    }
    return E_NOINTERFACE;
}

template <class Class, class Base>
HRESULT WINAPI _AtlMapChain(void* pv, REFIID riid, LPVOID* ppv, DWORD_PTR) noexcept
{
    return AtlInternalQueryInterface(static_cast<Base*>(static_cast<Class*>(pv)), Base::_GetEntries(), riid,
                                     ppv);
}

inline HRESULT WINAPI _AtlMapNoInterface(void*, REFIID, LPVOID*, DWORD_PTR) noexcept
{
    return E_NOINTERFACE;
}

} // namespace ATL

#define BEGIN_COM_MAP(class_name)                                                                            \
public:                                                                                                      \
    using _ComMapClass = class_name;                                                                         \
    IUnknown* _GetRawUnknown() noexcept                                                                      \
    {                                                                                                        \
        return _GetEntries()->pfnCast(this);                                                                 \
    }                                                                                                        \
    IUnknown* GetUnknown() noexcept                                                                          \
    {                                                                                                        \
        return _GetRawUnknown();                                                                             \
    }                                                                                                        \
    HRESULT _InternalQueryInterface(REFIID riid, void** ppv) noexcept                                        \
    {                                                                                                        \
        return ATL::AtlInternalQueryInterface(this, _GetEntries(), riid, ppv);                               \
    }                                                                                                        \
    static const ATL::_ATL_INTMAP_ENTRY* WINAPI _GetEntries() noexcept                                       \
    {                                                                                                        \
        static const ATL::_ATL_INTMAP_ENTRY entries[] = {

#define COM_INTERFACE_ENTRY(x) {&__uuidof(x), &ATL::_AtlMapCast<_ComMapClass, x>, nullptr, 0},
#define COM_INTERFACE_ENTRY_IID(iid, x) {&iid, &ATL::_AtlMapCast<_ComMapClass, x>, nullptr, 0},
#define COM_INTERFACE_ENTRY2(x, x2) {&__uuidof(x), &ATL::_AtlMapCast<_ComMapClass, x, x2>, nullptr, 0},
#define COM_INTERFACE_ENTRY2_IID(iid, x, x2) {&iid, &ATL::_AtlMapCast<_ComMapClass, x, x2>, nullptr, 0},
#define COM_INTERFACE_ENTRY_FUNC(iid, data, function) {&iid, nullptr, function, data},
#define COM_INTERFACE_ENTRY_FUNC_BLIND(data, function) {nullptr, nullptr, function, data},
#define COM_INTERFACE_ENTRY_NOINTERFACE(x) {&__uuidof(x), nullptr, &ATL::_AtlMapNoInterface, 0},
#define COM_INTERFACE_ENTRY_CHAIN(base) {nullptr, nullptr, &ATL::_AtlMapChain<_ComMapClass, base>, 0},

// Declares the IUnknown methods again: calls to them would be ambiguous in a class with several interfaces.
// The pragma permits classes that omit "override" on other methods.
// clang-format off
#define END_COM_MAP()                                                                                        \
            {nullptr, nullptr, nullptr, 0}};                                                                 \
        return entries;                                                                                      \
    }                                                                                                        \
    _Pragma("clang diagnostic push")                                                                         \
    _Pragma("clang diagnostic ignored \"-Winconsistent-missing-override\"")                                  \
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;                                                            \
    virtual ULONG STDMETHODCALLTYPE Release() = 0;                                                           \
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) = 0;                           \
    _Pragma("clang diagnostic pop")
// clang-format on
