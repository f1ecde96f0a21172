// Text between the system, which uses UTF-16, and the report, which is UTF-8.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace quill::acceptance {

std::wstring to_wide(std::string_view text);
// "error 5: Access is denied."
std::string error_text(DWORD error);
// "0x80070005"
std::string hex_text(unsigned long value);

} // namespace quill::acceptance
