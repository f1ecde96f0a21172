// The classes that complete a COM class with IUnknown, and the creators that make its objects.
#pragma once

#include "atl/detail/module.h"
#include "atl/detail/object_root.h"

namespace ATL {

// Keeps the module loaded to the end of a scope.
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

// Makes an object of the most derived class and asks it for an interface. No reference is held at the end
// but the one handed out; on failure the object is gone and the out pointer is null.
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

// An object on the heap that keeps the module loaded.
template <class Base>
class CComObject : public Base
{
public:
    explicit CComObject(void* = nullptr)
    {
        if (_pAtlModule)
            _pAtlModule->Lock();
    }
    // Of some bases it overrides the destructor, of others it does not.
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
            // The destructor above gives the lock back before the members are gone.
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

    // The new object has a count of zero: the caller takes the first reference.
    static HRESULT WINAPI CreateInstance(CComObject** out) noexcept
    {
        if (!out)
            return E_POINTER;
        return _AtlConstruct(*out, nullptr);
    }
};

// An object that does not keep the module loaded.
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

// An object that the module itself holds one reference to: only the references of others keep the module
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

// T1 creates objects on their own, T2 those with an outer object.
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
