// What the file of a download is called, from its URL. Plain functions, callable on any thread.
#pragma once

#include <string>

namespace quill {

// What a file is called whose URL gives no name of use.
inline constexpr wchar_t untitled_name[] = L"Untitled.pdf";

// The name, at most 259 units, that the file behind url is to have; "Untitled.pdf" when url gives none
// that fits, or one that no file can have.
std::wstring CacheFileName(const wchar_t* url);

// temp_path with a separator at its end.
std::wstring WithSeparator(std::wstring temp_path);

} // namespace quill
