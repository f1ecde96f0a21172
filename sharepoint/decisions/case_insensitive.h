// Comparisons of text without regard to case, as all tests on pages and URLs are made: both sides are
// upper-cased character by character as the standard locale's character-type facet does it.
#pragma once

#include <string_view>

namespace quill {

// An empty part is contained in, begins and ends every text.
bool contains_ignoring_case(std::wstring_view text, std::wstring_view part);
bool begins_with_ignoring_case(std::wstring_view text, std::wstring_view beginning);
bool ends_with_ignoring_case(std::wstring_view text, std::wstring_view ending);

// Text of different lengths is never equal.
bool equal_ignoring_case(std::wstring_view left, std::wstring_view right);

} // namespace quill
