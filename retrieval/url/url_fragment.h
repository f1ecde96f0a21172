// Reads the page and the zoom that a URL's fragment specifies, as in "#page=3#zoom=150".
#pragma once

#include <cstdint>
#include <string_view>

namespace quill {

// Both functions split the text after the first "#" into pieces at every further "#" and use the first piece
// that contains the key anywhere: "page" finds "pagemode=none", and in "page=3&zoom=150" both keys find the
// same piece and its first "=", so both values are 3. key must not be empty. Numbers out of range are
// clamped.

// For the document's own URL. value is set to 0, then to the digits directly after the piece's first "=".
// Returns false if url is null or empty, or if the piece has no "="; true otherwise, also if there is no
// such piece.
bool parse_url_number(const wchar_t* url, std::wstring_view key, std::int32_t& value) noexcept;

// For the URL of a page that embeds documents: blanks and a sign may precede the number, as for _wtoi.
// Returns 0 if there is no number.
std::int32_t page_url_number(std::wstring_view url, std::wstring_view key) noexcept;

} // namespace quill
