// The command line and the working directory of the desktop editor. Used by pdf_editor.
#pragma once

#include <string>
#include <string_view>

namespace quill {

// The line does not begin with the program's name, because the editor parses the first token as a switch. The
// URL comes from a page: quotation marks and control characters are percent-encoded, so that it stays one
// argument. It must not end with a backslash, which would escape the closing quotation mark; a PDF link ends
// with ".pdf".
std::wstring editor_command_line(std::wstring_view url);

// The folder of a path without trailing separators, but never shorter than the root ("C:\", "\\server\",
// "\\?\C:\"); empty for a file name without a folder.
std::wstring parent_directory(std::wstring_view path);

} // namespace quill
