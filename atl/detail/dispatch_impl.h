// IDispatch implemented with type information.
#pragma once

#include "atl/detail/module.h"

#include <oaidl.h>

#include <memory>
#include <string>
#include <vector>

namespace ATL {

// Type information of one interface, loaded on first use and kept until the module is unloaded. The library
// named by DECLARE_LIBID is loaded from the module's resources, any other by its registration. Thread-safe.
class CComTypeInfoHolder
{
public:
    constexpr CComTypeInfoHolder(const GUID* iid, const GUID* libid, WORD major, WORD minor) noexcept
        : m_pguid(iid), m_plibid(libid), m_wMajor(major), m_wMinor(minor)
    {
    }
    CComTypeInfoHolder(const CComTypeInfoHolder&) = delete;
    CComTypeInfoHolder& operator=(const CComTypeInfoHolder&) = delete;

    // The caller owns the returned reference.
    HRESULT GetTI(LCID lcid, ITypeInfo** out) noexcept;

    HRESULT GetTypeInfo(UINT index, LCID lcid, ITypeInfo** out) noexcept;
    HRESULT GetIDsOfNames(LPOLESTR* names, UINT count, LCID lcid, DISPID* ids) noexcept;
    HRESULT Invoke(IDispatch* target, DISPID id, LCID lcid, WORD flags, DISPPARAMS* parameters,
                   VARIANT* result, EXCEPINFO* exception, UINT* bad_argument) noexcept;

private:
    struct named_id
    {
        std::wstring name;
        DISPID id;
    };

    HRESULT EnsureTI(LCID lcid) noexcept;
    HRESULT load(LCID lcid);
    static std::vector<named_id> load_names(ITypeInfo* info);
    static void __stdcall Cleanup(DWORD_PTR holder) noexcept;

    const GUID* m_pguid;
    const GUID* m_plibid;
    WORD m_wMajor;
    WORD m_wMinor;
    SRWLOCK m_lock = SRWLOCK_INIT;
    ITypeInfo* m_pInfo = nullptr;
    std::vector<named_id>* m_names = nullptr; // like m_pInfo, freed by Cleanup
};

template <class T, const IID* piid = &__uuidof(T), const GUID* plibid = &CAtlModule::m_libid, WORD wMajor = 1,
          WORD wMinor = 0, class tihclass = CComTypeInfoHolder>
class IDispatchImpl : public T
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
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID lcid, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* bad_argument) override
    {
        return _tih.Invoke(this, id, lcid, flags, parameters, result, exception, bad_argument);
    }

    static HRESULT GetTI(LCID lcid, ITypeInfo** out) noexcept { return _tih.GetTI(lcid, out); }

    using _tihclass = tihclass;
    constinit static inline _tihclass _tih{piid, plibid, wMajor, wMinor};
};

} // namespace ATL
