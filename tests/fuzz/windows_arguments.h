// Command lines, split as Windows programs split them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quill::fuzz {

// By the rules of the C library: blanks and tabs separate; quotation marks group; 2n backslashes before a
// quotation mark are n, one more escapes the mark; other backslashes are literal. The first argument has no
// escapes. The shell's function differs only for several quotation marks in a row.
std::vector<std::wstring> windows_arguments(std::wstring_view line);

} // namespace quill::fuzz
