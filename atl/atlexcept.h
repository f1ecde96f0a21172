// The exception that the framework's value types throw when memory runs out, and its conversion to a
// failure code where code may not throw any further.
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

// Called inside a catch block: the failure code for the exception being handled.
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
