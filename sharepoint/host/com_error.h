// Throws failure codes of COM calls as std::system_error, for code that runs inside a barrier.
#pragma once

#include <windows.h>

#include <system_error>

namespace quill {

[[noreturn]] inline void throw_com_error(HRESULT code, const char* what)
{
    throw std::system_error(code, std::system_category(), what);
}

inline void throw_if_failed(HRESULT code, const char* what)
{
    if (FAILED(code))
        throw_com_error(code, what);
}

} // namespace quill
