// Where the worker stores a download: a numbered folder of its own below the temporary folder, and in it a
// file that is named after the URL and always ends in ".pdf". Callable on any thread.
#pragma once

#include <string>

namespace quill {

// The file name for a URL that has no usable one.
inline constexpr wchar_t untitled_name[] = L"Untitled.pdf";

// The file name of url, at most 259 UTF-16 code units; untitled_name if url has none, or one that is too long
// or not permitted by the file system.
std::wstring cache_file_name(const wchar_t* url);

// Appends a backslash unless path is empty or ends with a separator.
std::wstring with_separator(std::wstring path);

// Creates the first of the folders "qll0", "qll1", ... that exists neither as a folder nor as a file, and
// returns its path with a trailing backslash. Empty if it cannot be created or its path does not fit into
// MAX_PATH. temp_path ends with a separator and is listed only once. Callable concurrently, also by several
// processes.
std::wstring create_cache_folder(const std::wstring& temp_path);

// The path of file_name in folder with the extension ".pdf"; of untitled_name if file_name would lead out of
// the folder. Empty if the path does not fit into MAX_PATH. folder ends with a backslash.
std::wstring cache_file_path(const std::wstring& folder, const std::wstring& file_name);

} // namespace quill
