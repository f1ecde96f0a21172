// Converts UTF-16 to UTF-8, the encoding of log lines.
#pragma once

#include <string>
#include <string_view>

namespace quill {

// Embedded NULs are kept; unpaired surrogates become U+FFFD. Throws std::system_error with the Win32 error
// code if the conversion fails.
std::string to_utf8(std::wstring_view text);

} // namespace quill
