// Conversion of the system's UTF-16 text to the UTF-8 that log lines are made of.
#pragma once

#include <string>
#include <string_view>

namespace quill {

// Converts text, embedded NULs included; unpaired surrogates become U+FFFD. Throws std::system_error
// with the system's error code when the system refuses the conversion.
std::string to_utf8(std::wstring_view text);

} // namespace quill
