// What every fake is: an object of a scene with a true reference count.
#pragma once

#include "tests/sharepoint/fake_tab.h"

#include <windows.h>

#include <exdisp.h>
#include <mshtml.h>
#include <ocidl.h>
#include <unimplemented_interfaces.h>

namespace quill::test {

// Bases are without_X<X> of each interface X. The new object has one reference, the creator's.
template <class... Bases>
class fake_object : public Bases...
{
public:
    explicit fake_object(fake_scene& scene) : scene_(scene) { scene_.object_created(); }
    virtual ~fake_object() { scene_.object_destroyed(); }
    fake_object(const fake_object&) = delete;
    fake_object& operator=(const fake_object&) = delete;

    static void operator delete(void* memory, std::size_t size) { fake_scene::bury(memory, size); }

    [[gnu::noinline]] ULONG STDMETHODCALLTYPE AddRef() override
    {
        scene_.reference_call(__builtin_return_address(0));
        return ++references_;
    }
    [[gnu::noinline]] ULONG STDMETHODCALLTYPE Release() override
    {
        fake_scene& scene = scene_;
        const ULONG left = --references_;
        if (left == 0)
            delete this;
        scene.reference_call(__builtin_return_address(0));
        return left;
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override
    {
        if (iid != IID_IUnknown)
            if (const auto result = scene_.enter("IUnknown::QueryInterface", out))
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
    // Not AddRef'd; null for what the object does not have.
    virtual IUnknown* find_interface(REFIID iid) = 0;

    fake_scene& scene() const { return scene_; }

private:
    fake_scene& scene_;
    ULONG references_ = 1;
};

// Hands out one more reference: out is the caller's pointer.
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
