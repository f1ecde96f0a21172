// Event sinks: a class lists the events that it handles in a sink map, and each handler is called with the
// argument types that the source's type library declares.
#pragma once

#include "atl/detail/com_map.h"
#include "atl/detail/dispatch_impl.h"

#include <atomic>
#include <type_traits>

#ifndef _ATL_MAX_VARTYPES
#define _ATL_MAX_VARTYPES 8
#endif

namespace ATL {

// The signature of an event.
struct _ATL_FUNC_INFO
{
    CALLCONV cc;
    VARTYPE vtReturn; // VT_EMPTY: void
    SHORT nParams;
    VARTYPE pVarTypes[_ATL_MAX_VARTYPES];
};

// The object that DispCallFunc calls for a handler. DispCallFunc calls through a vtable, which a member
// function pointer does not have, so `table` is a vtable with the handler's entry function as its only slot.
struct _AtlEventTarget
{
    const void* const* table;
    void* object;
    HRESULT result; // of a handler that returns HRESULT or throws
};

struct _AtlEventHandler
{
    const void* entry;
    SHORT parameters;
    bool returns_value; // not HRESULT, which is the result of Invoke instead of a return value
};

template <class T, class Result, class... Arguments>
class _AtlEventEntry
{
public:
    template <auto function>
    static Result STDMETHODCALLTYPE Call(_AtlEventTarget* target, Arguments... arguments) noexcept
    {
        try {
            T* const object = static_cast<T*>(target->object);
            if constexpr (std::is_same_v<Result, HRESULT>)
                return target->result = (object->*function)(arguments...);
            else
                return (object->*function)(arguments...);
        } catch (...) {
            target->result = AtlHresultFromException();
        }
        return Result();
    }

    static_assert(sizeof...(Arguments) <= _ATL_MAX_VARTYPES);

    template <auto function>
    static _AtlEventHandler handler() noexcept
    {
        return {reinterpret_cast<const void*>(&Call<function>), static_cast<SHORT>(sizeof...(Arguments)),
                !std::is_void_v<Result> && !std::is_same_v<Result, HRESULT>};
    }
};

template <auto function, class T, class Result, class... Arguments>
_AtlEventHandler _AtlMakeEventHandler(Result (T::*)(Arguments...)) noexcept
{
    return _AtlEventEntry<T, Result, Arguments...>::template handler<function>();
}

template <auto function, class T, class Result, class... Arguments>
_AtlEventHandler _AtlMakeEventHandler(Result (T::*)(Arguments...) noexcept) noexcept
{
    return _AtlEventEntry<T, Result, Arguments...>::template handler<function>();
}

template <class T>
struct _ATL_EVENT_ENTRY
{
    UINT nControlID;
    const IID* piid; // null: end of the map
    DISPID dispid;
    _AtlEventHandler handler;
    const _ATL_FUNC_INFO* pInfo; // null: from the type library
};

// Calls a handler with the arguments of an event. Arguments are converted to the declared types; fails
// without calling the handler if a conversion fails or the argument count is wrong.
HRESULT _AtlInvokeEvent(const _AtlEventHandler& handler, void* object, const _ATL_FUNC_INFO& info,
                        const DISPPARAMS* parameters, VARIANT* result) noexcept;

// Reads the signature of a method of a dispinterface from its type information.
HRESULT _AtlGetFuncInfo(ITypeInfo* type, DISPID id, _ATL_FUNC_INFO& info) noexcept;

// Cache of event signatures: reading one from the type library is the most expensive part of an event, and
// signatures never change while the library is loaded. Thread-safe.
class _AtlFuncInfos
{
public:
    constexpr _AtlFuncInfos() noexcept = default;
    _AtlFuncInfos(const _AtlFuncInfos&) = delete;
    _AtlFuncInfos& operator=(const _AtlFuncInfos&) = delete;

    bool Find(DISPID id, _ATL_FUNC_INFO& info) const noexcept
    {
        for (const entry& each : m_entries) {
            const DISPID known = each.id.load(std::memory_order_acquire);
            if (known == id)
                info = each.info;
            if (known == id || known == unused)
                return known == id;
        }
        return false;
    }
    // Does nothing if the cache is full.
    void Keep(DISPID id, const _ATL_FUNC_INFO& info) noexcept;

private:
    static constexpr DISPID unused = DISPID_UNKNOWN;
    struct entry
    {
        std::atomic<DISPID> id{unused}; // stored last, with release order: publishes `info`
        _ATL_FUNC_INFO info{};
    };

    SRWLOCK m_writing = SRWLOCK_INIT;
    entry m_entries[8];
};

// Has the vtable layout of IDispatch without deriving from it: the sink's QueryInterface must differ from the
// object's, which may have several sinks and an IDispatch of its own.
class DECLSPEC_NOVTABLE _IDispEvent
{
public:
    virtual HRESULT STDMETHODCALLTYPE _LocDEQueryInterface(REFIID riid, void** ppv) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

    static constexpr DWORD not_advised = 0xFEFEFEFE;

    HRESULT DispEventAdvise(IUnknown* source, const IID* piid);
    HRESULT DispEventUnadvise(IUnknown* source, const IID* piid);

    DWORD m_dwEventCookie = not_advised;
};

template <UINT nID, class T, const IID* pdiid>
class DECLSPEC_NOVTABLE IDispEventSimpleImpl : public _IDispEvent
{
public:
    using _IDispEvent::DispEventAdvise;
    using _IDispEvent::DispEventUnadvise;
    // The source holds a reference to this object until DispEventUnadvise.
    HRESULT DispEventAdvise(IUnknown* source) { return DispEventAdvise(source, pdiid); }
    HRESULT DispEventUnadvise(IUnknown* source) { return DispEventUnadvise(source, pdiid); }

    HRESULT STDMETHODCALLTYPE _LocDEQueryInterface(REFIID riid, void** ppv) override
    {
        if (!ppv)
            return E_POINTER;
        *ppv = nullptr;
        if (!InlineIsEqualUnknown(riid) && !IsEqualGUID(riid, IID_IDispatch) && !IsEqualGUID(riid, *pdiid))
            return E_NOINTERFACE;
        AddRef();
        *ppv = static_cast<_IDispEvent*>(this);
        return S_OK;
    }

    // IDispatch, in vtable order
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count)
    {
        if (!count)
            return E_POINTER;
        *count = 0;
        return S_OK;
    }
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** out)
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        return E_NOTIMPL;
    }
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*)
    {
        return E_NOTIMPL;
    }
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID lcid, WORD, DISPPARAMS* parameters,
                                             VARIANT* result, EXCEPINFO*, UINT*)
    {
        // Some sources pass an uninitialised VARIANT for the result.
        if (result)
            VariantInit(result);
        if (!parameters)
            return E_INVALIDARG;
        for (auto* entry = T::_GetSinkMap(); entry->piid; ++entry) {
            if (entry->nControlID == nID && entry->dispid == id && IsEqualGUID(*entry->piid, *pdiid))
                return call(*entry, lcid, parameters, result);
        }
        return S_OK;
    }

    virtual HRESULT GetFuncInfoFromId(const IID&, DISPID, LCID, _ATL_FUNC_INFO&) { return E_NOTIMPL; }

private:
    HRESULT call(const _ATL_EVENT_ENTRY<T>& entry, LCID lcid, const DISPPARAMS* parameters, VARIANT* result)
    {
        // The handler may unadvise the sink, which releases the source's reference.
        AddRef();
        _ATL_FUNC_INFO info{};
        HRESULT hr = S_OK;
        if (entry.pInfo)
            info = *entry.pInfo;
        else
            hr = GetFuncInfoFromId(*pdiid, entry.dispid, lcid, info);
        if (SUCCEEDED(hr))
            hr = _AtlInvokeEvent(entry.handler, static_cast<T*>(this), info, parameters, result);
        Release();
        return hr;
    }
};

template <UINT nID, class T, const IID* pdiid, const GUID* plibid, WORD wMajor, WORD wMinor,
          class tihclass = CComTypeInfoHolder>
class DECLSPEC_NOVTABLE IDispEventImpl : public IDispEventSimpleImpl<nID, T, pdiid>
{
public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override
    {
        if (!count)
            return E_POINTER;
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid, ITypeInfo** out) override
    {
        return _tih.GetTypeInfo(index, lcid, out);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID lcid,
                                            DISPID* ids) override
    {
        return _tih.GetIDsOfNames(names, count, lcid, ids);
    }
    HRESULT GetFuncInfoFromId(const IID&, DISPID id, LCID lcid, _ATL_FUNC_INFO& info) override
    {
        if (_functions.Find(id, info))
            return S_OK;
        CComPtr<ITypeInfo> type;
        HRESULT hr = _tih.GetTI(lcid, &type);
        if (SUCCEEDED(hr))
            hr = _AtlGetFuncInfo(type, id, info);
        if (SUCCEEDED(hr))
            _functions.Keep(id, info);
        return hr;
    }

    using _tihclass = tihclass;
    constinit static inline _tihclass _tih{pdiid, plibid, wMajor, wMinor};

private:
    constinit static inline _AtlFuncInfos _functions;
};

} // namespace ATL

// Handlers are given as member function pointers: &class_name::handler.
// clang-format off
#define BEGIN_SINK_MAP(class_name)                                                                           \
    static const ATL::_ATL_EVENT_ENTRY<class_name>* _GetSinkMap() noexcept                                   \
    {                                                                                                        \
        static const ATL::_ATL_EVENT_ENTRY<class_name> map[] = {
#define SINK_ENTRY_INFO(id, iid, dispid, function, info)                                                     \
            {id, &iid, dispid, ATL::_AtlMakeEventHandler<function>(function), info},
#define SINK_ENTRY_EX(id, iid, dispid, function) SINK_ENTRY_INFO(id, iid, dispid, function, nullptr)
#define END_SINK_MAP()                                                                                       \
            {0, nullptr, 0, {}, nullptr}};                                                                   \
        return map;                                                                                          \
    }
// clang-format on
