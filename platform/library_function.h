// Looks up functions of a loaded library at run time.
#pragma once

#include <windows.h>

namespace quill {

// Returns the export `name` as a pointer of type Function; null if library is null or does not export it.
template <typename Function>
Function library_function(HMODULE library, const char* name) noexcept
{
    if (!library)
        return nullptr;
    // Through void*: a direct cast between function pointer types is a warning.
    // NOLINTNEXTLINE(bugprone-casting-through-void)
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

} // namespace quill
