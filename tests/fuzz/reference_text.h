// Slow and simple text operations for comparison.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quill::fuzz {

bool is_ascii(std::wstring_view text);
// Only ASCII letters change.
std::wstring lower_ascii(std::wstring_view text);

// UTF-16 to UTF-8; unpaired surrogates become U+FFFD.
std::string utf8_of(std::wstring_view text);
// UTF-8 to UTF-16; no value if the bytes are not valid UTF-8.
std::optional<std::wstring> utf16_of(std::string_view bytes);

// The parts between the separators, one more than there are separators.
std::vector<std::wstring> split(std::wstring_view text, wchar_t separator);

// The device that a file name opens, in small letters; empty without one.
std::wstring device_start(std::wstring_view name);

} // namespace quill::fuzz
