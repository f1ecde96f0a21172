// CComPtr and CComQIPtr: own one reference each and release it.
//
//     CComPtr<IHTMLElement> element;
//     HRESULT hr = page->getElementById(id, &element);  // out parameter; the pointer must be empty
//     CComQIPtr<IDispatch> dispatch(element);           // QueryInterface; empty if not supported
//     return element.CopyTo(out);                       // AddRefs for the caller
#pragma once

#include "atl/atldef.h"

#include <ocidl.h>
#include <unknwn.h>

#include <cstddef>
#include <memory>

namespace ATL {

// True if both pointers refer to the same COM object. Two null pointers are equal.
inline bool AtlIsEqualObject(IUnknown* left, IUnknown* right);

// Functions that call QueryInterface are not noexcept: a host's object may throw, and the exception must
// reach the caller's exception barrier instead of terminating the process.
template <class T>
class CComPtrBase
{
public:
    CComPtrBase(const CComPtrBase&) = delete;
    CComPtrBase& operator=(const CComPtrBase&) = delete;
    ~CComPtrBase()
    {
        if (p)
            p->Release();
    }

    operator T*() const noexcept { return p; }
    T& operator*() const noexcept
    {
        ATLASSERT(p);
        return *p;
    }
    // For out parameters. The pointer must be empty, otherwise its reference would leak.
    T** operator&() noexcept
    {
        ATLASSERT(!p);
        return &p;
    }
    T* operator->() const noexcept
    {
        ATLASSERT(p);
        return p;
    }
    bool operator!() const noexcept { return !p; }
    bool operator<(T* other) const noexcept { return p < other; }
    bool operator==(T* other) const noexcept { return p == other; }

    // Cleared before the call: Release may re-enter the owner of this pointer.
    void Release() noexcept
    {
        T* const old = p;
        p = nullptr;
        if (old)
            old->Release();
    }
    bool IsEqualObject(IUnknown* other) const { return AtlIsEqualObject(p, other); }
    // Takes ownership of the caller's reference.
    void Attach(T* other) noexcept
    {
        T* const old = p;
        p = other;
        if (old)
            old->Release();
    }
    // Transfers the reference to the caller.
    [[nodiscard]] T* Detach() noexcept
    {
        T* const old = p;
        p = nullptr;
        return old;
    }
    HRESULT CopyTo(T** out) const noexcept
    {
        if (!out)
            return E_POINTER;
        *out = p;
        if (p)
            p->AddRef();
        return S_OK;
    }
    HRESULT SetSite(IUnknown* parent)
    {
        IObjectWithSite* with_site = nullptr;
        HRESULT hr = QueryInterface(&with_site);
        if (SUCCEEDED(hr) && with_site) {
            hr = with_site->SetSite(parent);
            with_site->Release();
        }
        return hr;
    }
    HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer = nullptr, DWORD context = CLSCTX_ALL) noexcept
    {
        ATLASSERT(!p);
        return ::CoCreateInstance(clsid, outer, context, __uuidof(T), reinterpret_cast<void**>(&p));
    }
    HRESULT CoCreateInstance(LPCOLESTR prog_id, IUnknown* outer = nullptr,
                             DWORD context = CLSCTX_ALL) noexcept
    {
        CLSID clsid{};
        const HRESULT hr = CLSIDFromProgID(prog_id, &clsid);
        return SUCCEEDED(hr) ? CoCreateInstance(clsid, outer, context) : hr;
    }
    // E_NOINTERFACE for an empty pointer.
    template <class Q>
    HRESULT QueryInterface(Q** out) const
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        const HRESULT hr = p ? p->QueryInterface(__uuidof(Q), reinterpret_cast<void**>(out)) : E_NOINTERFACE;
        if (FAILED(hr))
            *out = nullptr; // what a failed call leaves there is not the caller's
        return hr;
    }

    T* p = nullptr;

protected:
    CComPtrBase() noexcept = default;
    explicit CComPtrBase(T* other) noexcept : p(other)
    {
        if (p)
            p->AddRef();
    }

    // AddRef before Release: both pointers may refer to the same object, with this its last reference.
    void assign(T* other) noexcept
    {
        if (other)
            other->AddRef();
        Attach(other);
    }
    void assign_queried(IUnknown* other, const IID& iid)
    {
        T* queried = nullptr;
        if (other && FAILED(other->QueryInterface(iid, reinterpret_cast<void**>(&queried))))
            queried = nullptr;
        Attach(queried);
    }
};

template <class T>
class CComPtr : public CComPtrBase<T>
{
public:
    CComPtr() noexcept = default;
    CComPtr(std::nullptr_t) noexcept {}
    CComPtr(T* other) noexcept : CComPtrBase<T>(other) {}
    CComPtr(const CComPtr& other) noexcept : CComPtrBase<T>(other.p) {}
    CComPtr(CComPtr&& other) noexcept { this->p = other.Detach(); }

    T* operator=(T* other) noexcept
    {
        this->assign(other);
        return this->p;
    }
    T* operator=(const CComPtr& other) noexcept
    {
        this->assign(other.p);
        return this->p;
    }
    T* operator=(CComPtr&& other) noexcept
    {
        if (this != std::addressof(other))
            this->Attach(other.Detach());
        return this->p;
    }
    // From another interface by QueryInterface; empty if the object does not support T.
    template <class Q>
    T* operator=(const CComPtr<Q>& other)
    {
        this->assign_queried(other.p, __uuidof(T));
        return this->p;
    }
};

// A CComPtr that also accepts any interface, by QueryInterface; empty if the object does not support T.
template <class T, const IID* piid = &__uuidof(T)>
class CComQIPtr : public CComPtr<T>
{
public:
    CComQIPtr() noexcept = default;
    CComQIPtr(std::nullptr_t) noexcept {}
    CComQIPtr(T* other) noexcept : CComPtr<T>(other) {}
    CComQIPtr(const CComQIPtr& other) noexcept : CComPtr<T>(other.p) {}
    CComQIPtr(IUnknown* other) { this->assign_queried(other, *piid); }

    T* operator=(std::nullptr_t) noexcept
    {
        this->Release();
        return nullptr;
    }
    T* operator=(T* other) noexcept
    {
        this->assign(other);
        return this->p;
    }
    T* operator=(const CComQIPtr& other) noexcept
    {
        this->assign(other.p);
        return this->p;
    }
    T* operator=(IUnknown* other)
    {
        this->assign_queried(other, *piid);
        return this->p;
    }
};

// Every interface is an IUnknown, but only QueryInterface returns the object's identity.
template <>
class CComQIPtr<IUnknown, &IID_IUnknown> : public CComPtr<IUnknown>
{
public:
    CComQIPtr() noexcept = default;
    CComQIPtr(IUnknown* other) { assign_queried(other, IID_IUnknown); }
    IUnknown* operator=(IUnknown* other)
    {
        assign_queried(other, IID_IUnknown);
        return p;
    }
};

inline bool AtlIsEqualObject(IUnknown* left, IUnknown* right)
{
    if (left == right)
        return true;
    if (!left || !right)
        return false;
    const CComQIPtr<IUnknown, &IID_IUnknown> left_identity(left);
    const CComQIPtr<IUnknown, &IID_IUnknown> right_identity(right);
    return left_identity && left_identity.p == right_identity.p;
}

} // namespace ATL
