#include "atl/detail/disp_event.h"

#include <olectl.h>

#include <array>

namespace ATL {
namespace {

// Owns a FUNCDESC, which must be released through its ITypeInfo.
class function_description
{
public:
    function_description(ITypeInfo* type, UINT index) noexcept : type_(type)
    {
        if (FAILED(type_->GetFuncDesc(index, &function_)))
            function_ = nullptr;
    }
    ~function_description()
    {
        if (function_)
            type_->ReleaseFuncDesc(function_);
    }
    function_description(const function_description&) = delete;
    function_description& operator=(const function_description&) = delete;

    explicit operator bool() const noexcept { return function_; }
    const FUNCDESC* operator->() const noexcept { return function_; }

private:
    ITypeInfo* type_;
    FUNCDESC* function_ = nullptr;
};

VARTYPE variant_type(ITypeInfo* type, const TYPEDESC& description) noexcept;

// Resolves a user-defined type to its VARTYPE; VT_USERDEFINED for a type that automation cannot pass.
VARTYPE named_type(ITypeInfo* type, HREFTYPE reference) noexcept
{
    CComPtr<ITypeInfo> referenced;
    if (FAILED(type->GetRefTypeInfo(reference, &referenced)) || !referenced)
        return VT_USERDEFINED;
    TYPEATTR* attributes = nullptr;
    if (FAILED(referenced->GetTypeAttr(&attributes)) || !attributes)
        return VT_USERDEFINED;
    VARTYPE result = VT_USERDEFINED;
    switch (attributes->typekind) {
    case TKIND_ENUM:
        result = VT_I4;
        break;
    case TKIND_ALIAS:
        result = variant_type(referenced, attributes->tdescAlias);
        break;
    case TKIND_DISPATCH:
    case TKIND_COCLASS:
        result = VT_DISPATCH;
        break;
    case TKIND_INTERFACE:
        result = attributes->wTypeFlags & TYPEFLAG_FDISPATCHABLE ? VT_DISPATCH : VT_UNKNOWN;
        break;
    default:
        break;
    }
    referenced->ReleaseTypeAttr(attributes);
    return result;
}

VARTYPE variant_type(ITypeInfo* type, const TYPEDESC& description) noexcept
{
    switch (description.vt) {
    case VT_PTR: {
        const TYPEDESC& pointed = *description.lptdesc;
        const VARTYPE inner = variant_type(type, pointed);
        // A VARIANT holds an interface pointer as VT_DISPATCH or VT_UNKNOWN, without VT_BYREF.
        if (pointed.vt == VT_USERDEFINED && (inner == VT_DISPATCH || inner == VT_UNKNOWN))
            return inner;
        return inner == VT_USERDEFINED ? inner : static_cast<VARTYPE>(inner | VT_BYREF);
    }
    case VT_USERDEFINED:
        return named_type(type, description.hreftype);
    case VT_VOID:
    case VT_HRESULT:
        return VT_EMPTY;
    case VT_INT:
        return VT_I4;
    case VT_UINT:
        return VT_UI4;
    default:
        return description.vt;
    }
}

// Sets `argument` to `given`, or to `converted`, which then borrows from `given` or owns a converted value.
HRESULT convert(VARIANTARG& given, VARTYPE wanted, VARIANT& converted, VARIANTARG*& argument) noexcept
{
    argument = &given;
    if (V_VT(&given) == wanted || wanted == VT_VARIANT)
        return S_OK;
    argument = &converted;
    if (wanted == (VT_BYREF | VT_VARIANT)) {
        // The source passed the value itself, but the handler expects a pointer to it.
        V_VT(&converted) = wanted;
        V_VARIANTREF(&converted) = &given;
        return S_OK;
    }
    if (wanted & VT_BYREF)
        return DISP_E_TYPEMISMATCH;
    return VariantChangeType(&converted, &given, 0, wanted);
}

} // namespace

HRESULT _AtlGetFuncInfo(ITypeInfo* type, DISPID id, _ATL_FUNC_INFO& info) noexcept
{
    CComPtr<ITypeInfo2> type2;
    HRESULT hr = type->QueryInterface(IID_ITypeInfo2, reinterpret_cast<void**>(&type2));
    if (FAILED(hr))
        return hr;
    UINT index = 0;
    hr = type2->GetFuncIndexOfMemId(id, INVOKE_FUNC, &index);
    if (FAILED(hr))
        return hr;
    const function_description function(type, index);
    if (!function || function->cParams < 0 || function->cParams > _ATL_MAX_VARTYPES)
        return E_FAIL;
    info.cc = function->callconv;
    info.nParams = function->cParams;
    info.vtReturn = variant_type(type, function->elemdescFunc.tdesc);
    for (SHORT i = 0; i < info.nParams; ++i) {
        info.pVarTypes[i] = variant_type(type, function->lprgelemdescParam[i].tdesc);
        if (info.pVarTypes[i] == VT_USERDEFINED)
            return DISP_E_BADVARTYPE;
    }
    return S_OK;
}

void _AtlFuncInfos::Keep(DISPID id, const _ATL_FUNC_INFO& info) noexcept
{
    AcquireSRWLockExclusive(&m_writing);
    for (entry& each : m_entries) {
        const DISPID known = each.id.load(std::memory_order_relaxed);
        if (known == id)
            break;
        if (known == unused) {
            each.info = info;
            each.id.store(id, std::memory_order_release);
            break;
        }
    }
    ReleaseSRWLockExclusive(&m_writing);
}

HRESULT _AtlInvokeEvent(const _AtlEventHandler& handler, void* object, const _ATL_FUNC_INFO& info,
                        const DISPPARAMS* parameters, VARIANT* result) noexcept
{
    if (parameters->cNamedArgs != 0)
        return DISP_E_NONAMEDARGS;
    const auto count = static_cast<UINT>(info.nParams);
    if (parameters->cArgs != count || handler.parameters != info.nParams)
        return DISP_E_BADPARAMCOUNT;

    std::array<CComVariant, _ATL_MAX_VARTYPES> converted;
    std::array<VARIANTARG*, _ATL_MAX_VARTYPES> arguments{};
    std::array<VARTYPE, _ATL_MAX_VARTYPES> types{};
    for (UINT i = 0; i < count; ++i) {
        types[i] = info.pVarTypes[i];
        // DISPPARAMS holds the arguments in reverse order.
        const HRESULT hr = convert(parameters->rgvarg[count - 1 - i], types[i], converted[i], arguments[i]);
        if (FAILED(hr))
            return hr;
    }
    _AtlEventTarget target{&handler.entry, object, S_OK};
    CComVariant value;
    const HRESULT hr =
        DispCallFunc(&target, 0, info.cc, handler.returns_value ? info.vtReturn : VARTYPE{VT_EMPTY}, count,
                     types.data(), arguments.data(), &value);
    if (FAILED(hr))
        return hr;
    if (result && SUCCEEDED(target.result))
        value.Detach(result);
    return target.result;
}

HRESULT _IDispEvent::DispEventAdvise(IUnknown* source, const IID* piid)
{
    // A second connection would overwrite the first one's cookie, which could then never be unadvised.
    if (m_dwEventCookie != not_advised)
        return CONNECT_E_ADVISELIMIT;
    DWORD cookie = 0;
    const HRESULT hr = AtlAdvise(source, reinterpret_cast<IUnknown*>(this), *piid, &cookie);
    if (SUCCEEDED(hr))
        m_dwEventCookie = cookie;
    return hr;
}

HRESULT _IDispEvent::DispEventUnadvise(IUnknown* source, const IID* piid)
{
    if (m_dwEventCookie == not_advised)
        return CONNECT_E_NOCONNECTION;
    // Cleared before the call: Unadvise may release this object.
    const DWORD cookie = m_dwEventCookie;
    m_dwEventCookie = not_advised;
    return AtlUnadvise(source, *piid, cookie);
}

} // namespace ATL
