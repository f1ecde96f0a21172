// The base of every COM class here: counts its objects and the references to them.
#pragma once

#include "stand_ins/html_engine/live_objects.h"

#include <windows.h>

#include <atlbase.h>
#include <atlcom.h>

namespace quill {

// Atomic, since pages may exist in several apartments.
inline live_objects live_counts;

template <long live_objects::* kind>
class counted_object : public CComObjectRootEx<CComSingleThreadModel>
{
public:
    counted_object() { InterlockedIncrement(&(live_counts.*kind)); }

    ULONG InternalAddRef() noexcept
    {
        InterlockedIncrement(&live_counts.references);
        return CComObjectRootEx::InternalAddRef();
    }
    ULONG InternalRelease() noexcept
    {
        InterlockedDecrement(&live_counts.references);
        return CComObjectRootEx::InternalRelease();
    }

protected:
    ~counted_object() { InterlockedDecrement(&(live_counts.*kind)); }
};

// Creates an object; `out` owns its first reference.
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
