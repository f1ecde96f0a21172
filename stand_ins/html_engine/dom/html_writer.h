// Serialises trees: as markup and as visible text.
#pragma once

#include "stand_ins/html_engine/dom/dom_node.h"

#include <string>

namespace quill {

// Markup as the standard defines it: element names in lower case, values in double quotes, all tags included.
std::wstring outer_html(const dom_node& node);
std::wstring inner_html(const dom_node& node);

// The text without markup, scripts and style sheets.
std::wstring inner_text(const dom_node& node);

// Whether the element has neither end tag nor contents, such as "br".
bool is_void_element(const dom_node& node);

} // namespace quill
