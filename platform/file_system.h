// Directory tests and creation on wide paths.
#pragma once

#include <string>
#include <system_error>

namespace quill {

// The Directory functions throw std::runtime_error on failure, with a message that begins with the
// function's name; an empty path is a failure of each of them.

// True when path names an existing directory; false when it names a file, nothing, or cannot be read.
bool DirectoryExists(const std::wstring& path);

// Creates the last level of path. Throws std::system_error with the system's code when it cannot,
// ERROR_ALREADY_EXISTS included.
void DirectoryCreate(const std::wstring& path);

// Creates every missing level of path. Levels are separated by backslashes only.
void DirectoryCreateRecursively(const std::wstring& path);

// Creates every missing level of path, separated by backslashes or forward slashes, for callers that tell
// the user why it failed. No error when path is a directory at the end.
std::error_code create_missing_directories(const std::wstring& path);

} // namespace quill
