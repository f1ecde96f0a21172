// The exception barrier and out parameter helpers of the page's COM methods.
//
//     STDMETHODIMP html_document2::get_title(BSTR* title)
//     {
//         return guarded_out(title, [&] {
//             *title = new_bstr(page()->title());
//             return S_OK;
//         });
//     }
#pragma once

#include "platform/bstr_view.h"

#include <windows.h>

#include <oleauto.h>

#include <new>
#include <string>
#include <string_view>

namespace quill {

// Calls `work` and converts exceptions to HRESULTs, since a COM method must not throw.
template <class Work>
HRESULT guarded(const Work& work) noexcept
{
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

// Initialises the out parameter, then calls `work`, which sets it.
template <class Out, class Work>
HRESULT guarded_out(Out* out, const Work& work) noexcept
{
    if (out == nullptr)
        return E_POINTER;
    *out = Out{};
    return guarded(work);
}

inline BSTR new_bstr(std::wstring_view text)
{
    const BSTR result = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (result == nullptr)
        throw std::bad_alloc();
    return result;
}

inline HRESULT set_bool(VARIANT_BOOL* out, bool value)
{
    if (out == nullptr)
        return E_POINTER;
    *out = value ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

} // namespace quill
