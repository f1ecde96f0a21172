// The templates that add IUnknown to a COM class, and the creators of its objects.
#pragma once

#include "atl/detail/module.h"
#include "atl/detail/object_root.h"

namespace ATL {

// Keeps the module loaded until the end of the scope.
class _AtlModuleLock
{
public:
    _AtlModuleLock() noexcept : m_module(_pAtlModule)
    {
        if (m_module)
            m_module->Lock();
    }
    ~_AtlModuleLock()
    {
        if (m_module)
            m_module->Unlock();
    }
    _AtlModuleLock(const _AtlModuleLock&) = delete;
    _AtlModuleLock& operator=(const _AtlModuleLock&) = delete;

private:
    CAtlModule* m_module;
};

// Constructs an object of the most derived class and runs FinalConstruct. The new object has a reference
// count of zero. On failure it is deleted and `object` is null.
template <class T>
HRESULT _AtlConstruct(T*& object, void* pv) noexcept
{
    object = nullptr;
    try {
        object = new T(pv);
    } catch (...) {
        return AtlHresultFromException();
    }
    object->SetVoid(pv);
    object->InternalFinalConstructAddRef();
    HRESULT hr = object->_AtlInitialConstruct();
    if (SUCCEEDED(hr)) {
        try {
            hr = object->FinalConstruct();
        } catch (...) {
            hr = AtlHresultFromException();
        }
    }
    if (SUCCEEDED(hr))
        hr = object->_AtlFinalConstruct();
    object->InternalFinalConstructRelease();
    if (FAILED(hr)) {
        delete object;
        object = nullptr;
    }
    return hr;
}

// A heap object that keeps the module loaded.
template <class Base>
class CComObject : public Base
{
public:
    explicit CComObject(void* = nullptr)
    {
        if (_pAtlModule)
            _pAtlModule->Lock();
    }
    // Overrides the destructor of some base classes only.
    // NOLINTNEXTLINE(modernize-use-override)
    virtual ~CComObject()
    {
        this->m_dwRef = CComObjectRootBase::destroyed_count;
        this->FinalRelease();
        if (_pAtlModule)
            _pAtlModule->Unlock();
    }

    ULONG STDMETHODCALLTYPE AddRef() override { return this->InternalAddRef(); }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG count = this->InternalRelease();
        if (count == 0) {
            // ~CComObject releases the module lock before the members are destroyed.
            const _AtlModuleLock lock;
            delete this;
        }
        return count;
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override
    {
        return this->_InternalQueryInterface(riid, ppv);
    }
    template <class Q>
    HRESULT STDMETHODCALLTYPE QueryInterface(Q** out)
    {
        return QueryInterface(__uuidof(Q), reinterpret_cast<void**>(out));
    }

    // The new object has a reference count of zero: the caller must AddRef it.
    static HRESULT WINAPI CreateInstance(CComObject** out) noexcept
    {
        if (!out)
            return E_POINTER;
        return _AtlConstruct(*out, nullptr);
    }
};

// A heap object that does not keep the module loaded.
template <class Base>
class CComObjectNoLock : public Base
{
public:
    explicit CComObjectNoLock(void* = nullptr) {}
    virtual ~CComObjectNoLock()
    {
        this->m_dwRef = CComObjectRootBase::destroyed_count;
        this->FinalRelease();
    }

    ULONG STDMETHODCALLTYPE AddRef() override { return this->InternalAddRef(); }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG count = this->InternalRelease();
        if (count == 0)
            delete this;
        return count;
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override
    {
        return this->_InternalQueryInterface(riid, ppv);
    }
};

// An object that the module caches with one reference of its own. Only further references keep the module
// loaded.
template <class Base>
class CComObjectCached : public Base
{
public:
    explicit CComObjectCached(void* = nullptr) {}
    virtual ~CComObjectCached()
    {
        this->m_dwRef = CComObjectRootBase::destroyed_count;
        this->FinalRelease();
    }

    ULONG STDMETHODCALLTYPE AddRef() override
    {
        const ULONG count = this->InternalAddRef();
        if (count == 2 && _pAtlModule)
            _pAtlModule->Lock();
        return count;
    }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG count = this->InternalRelease();
        if (count == 0)
            delete this;
        else if (count == 1 && _pAtlModule)
            _pAtlModule->Unlock();
        return count;
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override
    {
        return this->_InternalQueryInterface(riid, ppv);
    }
};

template <class T>
class CComCreator
{
public:
    static HRESULT WINAPI CreateInstance(void* pv, REFIID riid, LPVOID* ppv) noexcept
    {
        if (!ppv)
            return E_POINTER;
        *ppv = nullptr;
        T* object = nullptr;
        HRESULT hr = _AtlConstruct(object, pv);
        if (FAILED(hr))
            return hr;
        hr = object->QueryInterface(riid, ppv);
        if (hr != S_OK)
            delete object;
        return hr;
    }
};

template <HRESULT result>
class CComFailCreator
{
public:
    static HRESULT WINAPI CreateInstance(void*, REFIID, LPVOID* ppv) noexcept
    {
        if (!ppv)
            return E_POINTER;
        *ppv = nullptr;
        return result;
    }
};

// T1 creates standalone objects, T2 aggregated ones.
template <class T1, class T2>
class CComCreator2
{
public:
    static HRESULT WINAPI CreateInstance(void* pv, REFIID riid, LPVOID* ppv) noexcept
    {
        return pv ? T2::CreateInstance(pv, riid, ppv) : T1::CreateInstance(nullptr, riid, ppv);
    }
};

} // namespace ATL

#define DECLARE_NOT_AGGREGATABLE(class_name)                                                                 \
public:                                                                                                      \
    using _CreatorClass = ATL::CComCreator2<ATL::CComCreator<ATL::CComObject<class_name>>,                   \
                                            ATL::CComFailCreator<CLASS_E_NOAGGREGATION>>;
