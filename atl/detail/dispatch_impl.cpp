#include "atl/detail/dispatch_impl.h"

#include "atl/detail/type_library.h"

#include <utility>

namespace ATL {
namespace {

class exclusive_lock
{
public:
    explicit exclusive_lock(SRWLOCK& lock) noexcept : lock_(lock) { AcquireSRWLockExclusive(&lock_); }
    ~exclusive_lock() { ReleaseSRWLockExclusive(&lock_); }
    exclusive_lock(const exclusive_lock&) = delete;
    exclusive_lock& operator=(const exclusive_lock&) = delete;

private:
    SRWLOCK& lock_;
};

} // namespace

HRESULT CComTypeInfoHolder::GetTI(LCID lcid, ITypeInfo** out) noexcept
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    const HRESULT hr = EnsureTI(lcid);
    if (SUCCEEDED(hr)) {
        *out = m_pInfo;
        m_pInfo->AddRef();
    }
    return hr;
}

HRESULT CComTypeInfoHolder::GetTypeInfo(UINT index, LCID lcid, ITypeInfo** out) noexcept
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    return index == 0 ? GetTI(lcid, out) : DISP_E_BADINDEX;
}

HRESULT CComTypeInfoHolder::GetIDsOfNames(LPOLESTR* names, UINT count, LCID lcid, DISPID* ids) noexcept
{
    if (!names || !ids || count == 0)
        return E_INVALIDARG;
    const HRESULT hr = EnsureTI(lcid);
    if (FAILED(hr))
        return hr;
    // Further names are parameter names, which the cache does not hold.
    if (count == 1 && names[0]) {
        for (const named_id& known : *m_names) {
            if (known.name == names[0]) {
                ids[0] = known.id;
                return S_OK;
            }
        }
    }
    return m_pInfo->GetIDsOfNames(names, count, ids);
}

HRESULT CComTypeInfoHolder::Invoke(IDispatch* target, DISPID id, LCID lcid, WORD flags,
                                   DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                   UINT* bad_argument) noexcept
{
    if (!parameters)
        return E_INVALIDARG;
    const HRESULT hr = EnsureTI(lcid);
    if (FAILED(hr))
        return hr;
    // The error object of an earlier call must not be reported for this one.
    SetErrorInfo(0, nullptr);
    return m_pInfo->Invoke(target, id, flags, parameters, result, exception, bad_argument);
}

HRESULT CComTypeInfoHolder::EnsureTI(LCID lcid) noexcept
{
    const exclusive_lock lock(m_lock);
    if (m_pInfo)
        return S_OK;
    try {
        return load(lcid);
    } catch (...) {
        return AtlHresultFromException();
    }
}

HRESULT CComTypeInfoHolder::load(LCID lcid)
{
    if (!_pAtlModule)
        return E_UNEXPECTED;
    CComPtr<ITypeLib> library;
    HRESULT hr = IsEqualGUID(*m_plibid, CAtlModule::m_libid)
                     ? AtlLoadTypeLib(_AtlBaseModule.GetResourceInstance(), nullptr, nullptr, &library)
                     : LoadRegTypeLib(*m_plibid, m_wMajor, m_wMinor, lcid, &library);
    if (SUCCEEDED(hr) && !library)
        hr = TYPE_E_CANTLOADLIBRARY;
    if (FAILED(hr))
        return hr;
    CComPtr<ITypeInfo> info;
    hr = library->GetTypeInfoOfGuid(*m_pguid, &info);
    if (SUCCEEDED(hr) && !info)
        hr = TYPE_E_ELEMENTNOTFOUND;
    if (FAILED(hr))
        return hr;
    auto names = std::make_unique<std::vector<named_id>>(load_names(info));
    hr = _pAtlModule->AddTermFunc(Cleanup, reinterpret_cast<DWORD_PTR>(this));
    if (FAILED(hr))
        return hr;
    m_names = names.release();
    m_pInfo = info.Detach();
    return S_OK;
}

std::vector<CComTypeInfoHolder::named_id> CComTypeInfoHolder::load_names(ITypeInfo* info)
{
    TYPEATTR* attributes = nullptr;
    if (FAILED(info->GetTypeAttr(&attributes)) || !attributes)
        return {};
    const UINT functions = attributes->cFuncs;
    info->ReleaseTypeAttr(attributes);

    std::vector<named_id> names;
    for (UINT i = 0; i < functions; ++i) {
        FUNCDESC* function = nullptr;
        if (FAILED(info->GetFuncDesc(i, &function)) || !function)
            continue;
        const DISPID id = function->memid;
        info->ReleaseFuncDesc(function);
        CComBSTR name;
        if (SUCCEEDED(info->GetDocumentation(id, &name, nullptr, nullptr, nullptr)) && name)
            names.push_back({std::wstring(name, name.Length()), id});
    }
    return names;
}

void __stdcall CComTypeInfoHolder::Cleanup(DWORD_PTR holder) noexcept
{
    auto* const self = reinterpret_cast<CComTypeInfoHolder*>(holder);
    // No lock: no other caller remains, and at process exit a terminated thread may still own it.
    delete std::exchange(self->m_names, nullptr);
    if (ITypeInfo* const info = std::exchange(self->m_pInfo, nullptr))
        info->Release();
}

} // namespace ATL
