// Definitions that every framework header starts from.
#pragma once

#include <windows.h>

#include <objbase.h>

#include <cassert>

#define ATL_NO_VTABLE
#define ATLAPI HRESULT __stdcall
#define ATLAPI_(type) type __stdcall

#define ATLASSERT(expression) assert(expression)

// A condition that a caller in the same program breaks only by mistake; checked in every build.
#define ATLENSURE_RETURN_HR(expression, result)                                                              \
    do {                                                                                                     \
        if (!(expression))                                                                                   \
            return (result);                                                                                 \
    } while (0)
#define ATLENSURE_RETURN(expression) ATLENSURE_RETURN_HR(expression, E_FAIL)

// The image that this copy of the framework is linked into: its address is the module's handle.
extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace ATL {

// GetLastError as a failure code, also when the failing function forgot to set it.
inline HRESULT AtlHresultFromWin32(DWORD error) noexcept
{
    return error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error);
}

inline HRESULT AtlHresultFromLastError() noexcept
{
    return AtlHresultFromWin32(GetLastError());
}

} // namespace ATL
