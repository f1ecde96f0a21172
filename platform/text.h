// Text functions for plain code: comparison of ASCII names, and UTF-8 for log lines.
#pragma once

#include <string>
#include <string_view>

namespace quill {

// Ignores the case of ASCII letters only, for names that are ASCII: HTML tags, MIME types, device names.
bool equal_ignoring_ascii_case(std::wstring_view left, std::wstring_view right) noexcept;

// Embedded NULs are kept; unpaired surrogates become U+FFFD. Throws std::system_error with the Win32 error
// code if the conversion fails.
std::string to_utf8(std::wstring_view text);

} // namespace quill
