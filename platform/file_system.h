// Directory tests and creation on wide paths. Every function throws std::runtime_error on failure, with
// a message that begins with the function's name; an empty path is a failure of each of them.
#pragma once

#include <string>

namespace quill {

// True when path names an existing directory; false when it names a file, nothing, or cannot be read.
bool DirectoryExists(const std::wstring& path);

// Creates the last level of path. Throws std::system_error with the system's code when it cannot,
// ERROR_ALREADY_EXISTS included.
void DirectoryCreate(const std::wstring& path);

// Creates every missing level of path. Levels are separated by backslashes only.
void DirectoryCreateRecursively(const std::wstring& path);

} // namespace quill
