// A BSTR as a string view: BSTRs carry their length, may contain NULs, and null stands for the empty string.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string_view>

namespace quill {

// Borrowed: valid as long as the BSTR.
inline std::wstring_view view_of(BSTR text) noexcept
{
    return text ? std::wstring_view(text, SysStringLen(text)) : std::wstring_view();
}

} // namespace quill
