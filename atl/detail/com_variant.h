// CComVariant: a VARIANT that is cleared by its destructor.
//
//     CComVariant url(L"http://host/file.pdf"), none;
//     HRESULT hr = browser->Navigate2(&url, &none, &none, &none, &none);
//     CComVariant value;
//     if (SUCCEEDED(element->getAttribute(name, 0, &value)) && value.vt == VT_BSTR)
//         use(value.bstrVal);                           // borrowed from `value`
#pragma once

#include "atl/atldef.h"
#include "atl/atlexcept.h"
#include "atl/detail/com_bstr.h"

#include <oleauto.h>

namespace ATL {

// Constructors and assignments throw CAtlException if a copy fails; functions that return HRESULT return the
// error. Interface pointers are AddRefed, strings are copied.
class CComVariant : public tagVARIANT
{
public:
    CComVariant() noexcept { VariantInit(this); }
    ~CComVariant() { VariantClear(this); }

    CComVariant(const VARIANT& source) : CComVariant() { copy_from(source); }
    CComVariant(const CComVariant& source) : CComVariant() { copy_from(source); }
    CComVariant(CComVariant&& source) noexcept : tagVARIANT(source) { source.vt = VT_EMPTY; }
    CComVariant(LPCOLESTR source) : CComVariant() { set_string(source); }
    CComVariant(const CComBSTR& source) : CComVariant() { set_bstr(source.Copy(), source.m_str); }
    CComVariant(bool source) noexcept : CComVariant()
    {
        vt = VT_BOOL;
        boolVal = source ? VARIANT_TRUE : VARIANT_FALSE;
    }
    // VT_I4 or VT_INT.
    CComVariant(int source, VARTYPE type = VT_I4) noexcept : CComVariant()
    {
        vt = type == VT_INT ? VARTYPE{VT_INT} : VARTYPE{VT_I4};
        lVal = source;
    }
    // VT_I4 or VT_ERROR.
    CComVariant(long source, VARTYPE type = VT_I4) noexcept : CComVariant()
    {
        vt = type == VT_ERROR ? VARTYPE{VT_ERROR} : VARTYPE{VT_I4};
        lVal = source;
    }
    // VT_UI4 or VT_UINT.
    CComVariant(unsigned int source, VARTYPE type = VT_UI4) noexcept : CComVariant()
    {
        vt = type == VT_UINT ? VARTYPE{VT_UINT} : VARTYPE{VT_UI4};
        ulVal = source;
    }
    CComVariant(unsigned long source) noexcept : CComVariant()
    {
        vt = VT_UI4;
        ulVal = source;
    }
    CComVariant(BYTE source) noexcept : CComVariant()
    {
        vt = VT_UI1;
        bVal = source;
    }
    CComVariant(short source) noexcept : CComVariant()
    {
        vt = VT_I2;
        iVal = source;
    }
    CComVariant(unsigned short source) noexcept : CComVariant()
    {
        vt = VT_UI2;
        uiVal = source;
    }
    CComVariant(LONGLONG source) noexcept : CComVariant()
    {
        vt = VT_I8;
        llVal = source;
    }
    CComVariant(ULONGLONG source) noexcept : CComVariant()
    {
        vt = VT_UI8;
        ullVal = source;
    }
    CComVariant(float source) noexcept : CComVariant()
    {
        vt = VT_R4;
        fltVal = source;
    }
    // VT_R8 or VT_DATE.
    CComVariant(double source, VARTYPE type = VT_R8) noexcept : CComVariant()
    {
        vt = type == VT_DATE ? VARTYPE{VT_DATE} : VARTYPE{VT_R8};
        dblVal = source;
    }
    CComVariant(IDispatch* source) noexcept : CComVariant()
    {
        vt = VT_DISPATCH;
        pdispVal = source;
        if (source)
            source->AddRef();
    }
    CComVariant(IUnknown* source) noexcept : CComVariant()
    {
        vt = VT_UNKNOWN;
        punkVal = source;
        if (source)
            source->AddRef();
    }

    // The copy is made first: `source` may be owned by the old value.
    CComVariant& operator=(const VARIANT& source)
    {
        CComVariant made(source);
        Attach(&made);
        return *this;
    }
    CComVariant& operator=(const CComVariant& source) { return *this = static_cast<const VARIANT&>(source); }
    CComVariant& operator=(CComVariant&& source) noexcept
    {
        if (this != &source)
            Attach(&source);
        return *this;
    }
    template <class T>
    CComVariant& operator=(T source)
    {
        CComVariant made(source);
        Attach(&made);
        return *this;
    }

    HRESULT Clear() noexcept { return VariantClear(this); }
    HRESULT Copy(const VARIANT* source) noexcept { return VariantCopy(this, const_cast<VARIANT*>(source)); }
    HRESULT ChangeType(VARTYPE type, const VARIANT* source = nullptr) noexcept
    {
        return VariantChangeType(this, source ? const_cast<VARIANT*>(source) : this, 0, type);
    }
    // Moves the value of `source` in; `source` becomes VT_EMPTY.
    HRESULT Attach(VARIANT* source) noexcept
    {
        if (!source)
            return E_INVALIDARG;
        const HRESULT hr = Clear();
        if (SUCCEEDED(hr)) {
            static_cast<VARIANT&>(*this) = *source;
            source->vt = VT_EMPTY;
        }
        return hr;
    }
    // Moves the value out; the old value of `destination` is cleared.
    HRESULT Detach(VARIANT* destination) noexcept
    {
        if (!destination)
            return E_POINTER;
        const HRESULT hr = VariantClear(destination);
        if (SUCCEEDED(hr)) {
            *destination = *this;
            vt = VT_EMPTY;
        }
        return hr;
    }

    bool operator==(const VARIANT& other) const noexcept
    {
        if (vt == VT_NULL && other.vt == VT_NULL)
            return true;
        if (vt != other.vt)
            return false;
        return VarCmp(const_cast<CComVariant*>(this), const_cast<VARIANT*>(&other), LOCALE_USER_DEFAULT, 0) ==
               static_cast<HRESULT>(VARCMP_EQ);
    }
    bool operator!=(const VARIANT& other) const noexcept { return !(*this == other); }

private:
    void copy_from(const VARIANT& source)
    {
        const HRESULT hr = Copy(&source);
        if (FAILED(hr))
            AtlThrow(hr);
    }
    void set_string(LPCOLESTR source) { set_bstr(source ? SysAllocString(source) : nullptr, source); }
    void set_bstr(BSTR copied, const void* source)
    {
        if (!copied && source)
            AtlThrow(E_OUTOFMEMORY);
        vt = VT_BSTR;
        bstrVal = copied;
    }
};

} // namespace ATL
