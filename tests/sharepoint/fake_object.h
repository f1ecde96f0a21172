// Base of the fakes: counts references and registers with the fake_tab of the test.
#pragma once

#include "tests/sharepoint/fake_tab.h"

#include <windows.h>

#include <exdisp.h>
#include <mshtml.h>
#include <ocidl.h>
#include <unimplemented_interfaces.h>

namespace quill::test {

// Bases are without_X<X> for each interface X. A new object has one reference, which the creator owns.
template <class... Bases>
class fake_object : public Bases...
{
public:
    explicit fake_object(fake_tab& tab) : tab_(tab) { tab_.object_created(); }
    virtual ~fake_object() { tab_.object_destroyed(); }
    fake_object(const fake_object&) = delete;
    fake_object& operator=(const fake_object&) = delete;

    static void operator delete(void* memory, std::size_t size) { fake_tab::destroy(memory, size); }

    [[gnu::noinline]] ULONG STDMETHODCALLTYPE AddRef() override
    {
        tab_.reference_call(__builtin_return_address(0));
        return ++references_;
    }
    [[gnu::noinline]] ULONG STDMETHODCALLTYPE Release() override
    {
        fake_tab& tab = tab_;
        const ULONG left = --references_;
        if (left == 0)
            delete this;
        tab.reference_call(__builtin_return_address(0));
        return left;
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override
    {
        if (iid != IID_IUnknown)
            if (const auto result = tab_.enter("IUnknown::QueryInterface", out))
                return *result;
        *out = nullptr;
        IUnknown* const found = find_interface(iid);
        if (!found)
            return E_NOINTERFACE;
        found->AddRef();
        *out = found;
        return S_OK;
    }

protected:
    // Not AddRef'd; null if the object does not have the interface.
    virtual IUnknown* find_interface(REFIID iid) = 0;

    fake_tab& tab() const { return tab_; }

private:
    fake_tab& tab_;
    ULONG references_ = 1;
};

// Returns a new reference in an out parameter.
template <class Interface, class Object>
HRESULT hand_out(Object* object, Interface** out)
{
    if (object)
        object->AddRef();
    *out = object;
    return S_OK;
}

inline HRESULT hand_out(const std::wstring& text, BSTR* out)
{
    *out = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return S_OK;
}

} // namespace quill::test
