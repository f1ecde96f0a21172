// Escapes and unescapes document URLs and extracts the file name from one. Callable on any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quill {

// The form in which the document keeps its URL: UTF-8, bytes from 0x80 as "%XX" in upper case, a blank as
// "+", every other byte unchanged. Empty if text cannot be converted to UTF-8.
std::wstring EncodeUrl(std::wstring_view text);

// Reverses EncodeUrl; empty for a null url. A "%" that does not start an escape is kept. UTF-16 code units
// above 0xFF are reduced to their low byte.
std::wstring DecodeUrl(const wchar_t* url);

// Writes the file name of a decoded URL into buffer and returns its length in UTF-16 code units. capacity
// includes the terminator. Returns 0 if the URL has no name. If the result is not less than capacity, the
// name does not fit and the buffer must not be used.
std::size_t GetFileNameFromUrl(const wchar_t* url, wchar_t* buffer, std::size_t capacity);

} // namespace quill
