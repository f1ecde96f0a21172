// Functions that are looked up in a loaded library at run time.
#pragma once

#include <windows.h>

namespace quill {

// The function called name, as a pointer of type Function; null when library is null or has none.
template <typename Function>
Function library_function(HMODULE library, const char* name) noexcept
{
    if (!library)
        return nullptr;
    // By way of void*: no function type converts to another one without a warning.
    // NOLINTNEXTLINE(bugprone-casting-through-void)
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

} // namespace quill
