// Where a loaded module's file lies, and the short name that log files carry.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace quill {

// Full path of a module's file; the null handle stands for the process's executable. Paths beyond
// 4,159 characters come back cut. Throws std::system_error when the system does not know the module.
std::wstring module_path(HMODULE module);

// The file-name part of path, cut before its first dot; empty when the name has no dot.
std::wstring_view file_stem(std::wstring_view path);

// file_stem(module_path(module)), terminated. Throws as module_path does, and std::runtime_error "The
// module name is too long" when the stem does not fit.
void module_stem(HMODULE module, wchar_t (&stem)[MAX_PATH]);

// The copying step of module_stem for a stem already known.
void copy_stem(std::wstring_view stem, wchar_t (&buffer)[MAX_PATH]);

} // namespace quill
