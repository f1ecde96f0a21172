// Base definitions of every framework header.
#pragma once

#include <windows.h>

#include <objbase.h>

#include <cassert>

#define ATL_NO_VTABLE
#define ATLAPI HRESULT __stdcall
#define ATLAPI_(type) type __stdcall

#define ATLASSERT(expression) assert(expression)

// Precondition on the caller, checked in release builds too.
#define ATLENSURE_RETURN_HR(expression, result)                                                              \
    do {                                                                                                     \
        if (!(expression))                                                                                   \
            return (result);                                                                                 \
    } while (0)
#define ATLENSURE_RETURN(expression) ATLENSURE_RETURN_HR(expression, E_FAIL)

// Defined by the linker: the header of the image that contains this code. Its address is the module handle.
extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace ATL {

// Maps ERROR_SUCCESS to E_FAIL: some functions fail without setting the last error.
inline HRESULT AtlHresultFromWin32(DWORD error) noexcept
{
    return error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error);
}

inline HRESULT AtlHresultFromLastError() noexcept
{
    return AtlHresultFromWin32(GetLastError());
}

} // namespace ATL
