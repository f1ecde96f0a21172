// The plain part of download_switch.h: the text of the setting, not the registry.
#include "retrieval/download/download_switch.h"

#include <cctype>
#include <cwchar>

namespace quill {

wininet_switch parse_wininet_switch(const wchar_t* text) noexcept
{
    const wchar_t* number = std::wcsstr(text, L"/b");
    if (!number)
        return wininet_switch_no_number;
    number += 2;
    while (*number < 0x80 && std::isspace(*number))
        ++number;
    return std::wcstol(number, nullptr, 10) == 0 ? wininet_switch_zero : wininet_switch_on;
}

} // namespace quill
