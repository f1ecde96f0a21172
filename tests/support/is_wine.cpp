#include "tests/support/is_wine.h"

#include <windows.h>

namespace quill::test {

bool is_wine()
{
    static const bool found = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
    return found;
}

} // namespace quill::test
