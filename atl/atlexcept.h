// CAtlException, which the framework's value types throw when an allocation fails, and the conversion of
// exceptions to HRESULTs at the boundaries of COM methods.
#pragma once

#include "atl/atldef.h"

#include <new>

namespace ATL {

class CAtlException
{
public:
    CAtlException() noexcept = default;
    explicit CAtlException(HRESULT hr) noexcept : m_hr(hr) {}
    operator HRESULT() const noexcept { return m_hr; }

    HRESULT m_hr = E_FAIL;
};

[[noreturn]] inline void AtlThrow(HRESULT hr)
{
    throw CAtlException(hr);
}

// The HRESULT for the exception being handled. Call it inside a catch block only.
inline HRESULT AtlHresultFromException() noexcept
{
    try {
        throw;
    } catch (const CAtlException& e) {
        return e.m_hr;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

} // namespace ATL
