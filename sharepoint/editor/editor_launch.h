// What the desktop editor is started with, apart from starting it.
#pragma once

#include <string>
#include <string_view>

namespace quill {

// The editor takes its first token for a switch, so the line does not begin with the program's name. The URL
// is a page's: quotation marks and control characters are escaped, so that it stays one argument. It must not
// end with a backslash, which would escape the closing quotation mark; no PDF link does.
std::wstring editor_command_line(std::wstring_view url);

// The folder part of a path without separators at its end, but never shorter than the path's root
// ("C:\", "\\server\", "\\?\C:\"); empty for a bare file name.
std::wstring parent_directory(std::wstring_view path);

} // namespace quill
