// The path of a loaded module, and the stem of its file name, which log file names contain.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace quill {

// The full path of a module; null is the process's executable. Paths beyond 4,159 characters are truncated.
// Throws std::system_error if the handle is not a loaded module.
std::wstring module_path(HMODULE module);

// The file name in path up to its first dot; empty if it has no dot.
std::wstring_view file_stem(std::wstring_view path);

// Copies file_stem(module_path(module)), null-terminated. Throws as module_path, and std::runtime_error "The
// module name is too long" if the stem does not fit.
void module_stem(HMODULE module, wchar_t (&stem)[MAX_PATH]);

// Copies a known stem as module_stem does.
void copy_stem(std::wstring_view stem, wchar_t (&buffer)[MAX_PATH]);

} // namespace quill
