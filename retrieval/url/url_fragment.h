// The page and the zoom that an address asks for behind its "#", as in "#page=3#zoom=150".
#pragma once

#include <cstdint>
#include <string_view>

namespace quill {

// Both readings take the text behind the first "#" as pieces that end at every further "#", and let the
// first piece that holds the key anywhere decide: "page" finds "pagemode=none", and in "page=3&zoom=150"
// both keys find the same piece and its first "=", so both values are 3.
// Neither throws; numbers out of range end at the limits of the type. The key must not be empty.

// The reading of the document's own address. value is set to 0 first, and then to the digits right behind
// the deciding piece's first "=". false when the address is null or empty, or the deciding piece has no
// "="; true otherwise, also when there is no such piece and the value stays 0.
bool parse_url_number(const wchar_t* url, std::wstring_view key, std::int32_t& value) noexcept;

// The reading of the address of a page that embeds documents: as above, but the number may have blanks
// and a sign before it, as for _wtoi, and what cannot be read is 0.
std::int32_t page_url_number(std::wstring_view url, std::wstring_view key) noexcept;

} // namespace quill
