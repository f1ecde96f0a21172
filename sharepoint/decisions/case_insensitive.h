// Case-insensitive comparison of text of pages and URLs. Each UTF-16 code unit is upper-cased as the ctype
// facet of the standard locale does it.
#pragma once

#include <string_view>

namespace quill {

// True for an empty part, beginning or ending.
bool contains_ignoring_case(std::wstring_view text, std::wstring_view part);
bool begins_with_ignoring_case(std::wstring_view text, std::wstring_view beginning);
bool ends_with_ignoring_case(std::wstring_view text, std::wstring_view ending);

bool equal_ignoring_case(std::wstring_view left, std::wstring_view right);

} // namespace quill
