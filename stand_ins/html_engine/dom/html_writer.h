// Trees back to text: as markup, and as what a reader sees.
#pragma once

#include "stand_ins/html_engine/dom/dom_node.h"

#include <string>

namespace quill {

// As the standard writes a page: element names in lower case, values in double quotes, nothing left out.
std::wstring outer_html(const dom_node& node);
std::wstring inner_html(const dom_node& node);

// The text without markup; scripts and style sheets are no text.
std::wstring inner_text(const dom_node& node);

// Whether the element has no end tag and no contents, as "br".
bool is_void_element(const dom_node& node);

} // namespace quill
