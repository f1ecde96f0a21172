// A COM server without any function: the minimum cost of loading and creating.
#include <windows.h>

#include <unknwn.h>

#include <atomic>
#include <new>

namespace {

std::atomic<long> living_objects;

class empty_object : public IUnknown
{
public:
    empty_object() { ++living_objects; }
    virtual ~empty_object() { --living_objects; }

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override
    {
        *out = IsEqualIID(iid, IID_IUnknown) ? this : nullptr;
        if (!*out)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override
    {
        const ULONG left = --references_;
        if (left == 0)
            delete this;
        return left;
    }

private:
    ULONG references_ = 1;
};

class empty_factory : public IClassFactory
{
public:
    virtual ~empty_factory() = default;
    STDMETHODIMP QueryInterface(REFIID iid, void** out) override
    {
        const bool is_known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory);
        *out = is_known ? this : nullptr;
        return is_known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP CreateInstance(IUnknown*, REFIID iid, void** out) override
    {
        *out = nullptr;
        auto* const created = new (std::nothrow) empty_object;
        if (!created)
            return E_OUTOFMEMORY;
        const HRESULT result = created->QueryInterface(iid, out);
        created->Release();
        return result;
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }
};

} // namespace

// Exported by the definition file; the system's header declares both without an export.
STDAPI DllGetClassObject(REFCLSID, REFIID iid, LPVOID* out)
{
    static empty_factory factory;
    return factory.QueryInterface(iid, out);
}

STDAPI DllCanUnloadNow()
{
    return living_objects == 0 ? S_OK : S_FALSE;
}
