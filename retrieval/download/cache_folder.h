// Where a download is kept: a numbered folder of its own in the temporary folder, and a file in it that
// is named after the URL and always ends in ".pdf".
#pragma once

#include <string>

namespace quill {

// Creates the first folder "qll0", "qll1", ... of temp_path that does not exist yet, neither as a folder nor
// as a file, and returns it with a backslash at its end. Empty when it cannot be created or its path does not
// fit into a path buffer. temp_path ends with a separator; it is read once, however many folders it has.
// Several threads and processes may call it at the same time.
std::wstring CreateCacheFolder(const std::wstring& temp_path);

// The path in folder for a file of that name, its extension replaced by ".pdf"; "Untitled.pdf" in its
// place when the name leads out of the folder. Empty when the path does not fit into a path buffer.
// folder ends with a backslash.
std::wstring CacheFilePath(const std::wstring& folder, const std::wstring& file_name);

} // namespace quill
