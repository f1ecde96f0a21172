// The root of every COM class here: counts its objects and the references to them.
#pragma once

#include "stand_ins/html_engine/living_objects.h"

#include <windows.h>

#include <atlbase.h>
#include <atlcom.h>

namespace quill {

// Objects belong to one apartment each, but several apartments may have pages: counts change atomically.
inline living_objects living;

template <long living_objects::* kind>
class counted_object : public CComObjectRootEx<CComSingleThreadModel>
{
public:
    counted_object() { InterlockedIncrement(&(living.*kind)); }

    ULONG InternalAddRef() noexcept
    {
        InterlockedIncrement(&living.references);
        return CComObjectRootEx::InternalAddRef();
    }
    ULONG InternalRelease() noexcept
    {
        InterlockedDecrement(&living.references);
        return CComObjectRootEx::InternalRelease();
    }

protected:
    ~counted_object() { InterlockedDecrement(&(living.*kind)); }
};

// Creates an object and hands out its first reference.
template <class Object>
HRESULT create_object(CComPtr<CComObject<Object>>& out)
{
    CComObject<Object>* object = nullptr;
    const HRESULT hr = CComObject<Object>::CreateInstance(&object);
    if (SUCCEEDED(hr))
        out = object;
    return hr;
}

} // namespace quill
