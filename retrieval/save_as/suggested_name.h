// The file name that the Save As dialog suggests.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace quill {

// The path's file name without the "[1]" that the browser's cache inserts before the extension. nullopt if
// the path has no file name or no extension, or if the name is not shorter than MAX_PATH.
std::optional<std::wstring> suggested_file_name(const wchar_t* path);

} // namespace quill
