// Parses HTML to trees. The parser follows the standard's rules for malformed markup, as browsers do.
#pragma once

#include "stand_ins/html_engine/dom/dom_node.h"

#include <string>
#include <string_view>
#include <vector>

namespace quill {

// Decodes a page: by its byte order mark, as UTF-8 if valid, otherwise as Windows-1252.
std::wstring decode_page(std::string_view bytes);

// The document node of a page, which always has an html, a head and a body element.
dom_node::pointer read_page(std::wstring_view html);

// The nodes of a fragment inside an element with the name `context`.
std::vector<dom_node::pointer> read_fragment(std::wstring_view html, std::wstring_view context);

} // namespace quill
