// Tests for and creates directories.
#pragma once

#include <string>
#include <system_error>

namespace quill {

// The Directory functions throw std::runtime_error on failure and for an empty path. The message begins with
// the function's name.

// True if path is an existing directory; false if it is a file, does not exist or cannot be accessed.
bool DirectoryExists(const std::wstring& path);

// Creates the last level of path. Throws std::system_error with the Win32 error code, also for
// ERROR_ALREADY_EXISTS.
void DirectoryCreate(const std::wstring& path);

// Creates every missing level of path. Only backslashes separate levels.
void DirectoryCreateRecursively(const std::wstring& path);

// Creates every missing level of path, separated by backslashes or slashes. Returns the system's error, for
// callers that report it to the user; no error if path already is a directory.
std::error_code create_missing_directories(const std::wstring& path);

} // namespace quill
