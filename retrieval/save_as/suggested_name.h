// The file name under which saving a copy is suggested.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace quill {

// The path's file name, without the "[1]" that the browser's cache puts before the extension. Nothing
// when the path has no file name or no extension, or when the name does not fit into MAX_PATH units.
std::optional<std::wstring> suggested_file_name(const wchar_t* path);

} // namespace quill
