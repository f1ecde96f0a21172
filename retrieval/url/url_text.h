// Text of document URLs: escaping, unescaping and the file name that a URL asks for. Plain functions,
// callable on any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quill {

// The escaped form in which a document's URL is kept: UTF-8, bytes from 0x80 as "%XX" (upper case), a
// blank as "+", every other byte as it is. Empty when the text has no UTF-8 form.
std::wstring EncodeUrl(std::wstring_view text);

// The text that an escaped URL stands for; empty for a null url. A "%" that starts no escape stays. A
// unit above 0xFF keeps its low byte only.
std::wstring DecodeUrl(const wchar_t* url);

// Writes the file name that a decoded URL asks for into buffer (capacity units, terminator included)
// and returns its length in units. 0: the URL has no name. A result of capacity or more: the name does
// not fit and nothing usable was written.
std::size_t GetFileNameFromUrl(const wchar_t* url, wchar_t* buffer, std::size_t capacity);

} // namespace quill
