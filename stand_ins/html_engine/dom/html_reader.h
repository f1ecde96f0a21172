// HTML text to trees, by a parser that follows the standard's rules for broken markup as browsers do.
#pragma once

#include "stand_ins/html_engine/dom/dom_node.h"

#include <string>
#include <string_view>
#include <vector>

namespace quill {

// A page's bytes as text: by its byte order mark, as UTF-8 where that is what they are, else Windows-1252.
std::wstring decode_page(std::string_view bytes);

// The document node of a page. There are always an html, a head and a body element.
dom_node::pointer read_page(std::wstring_view html);

// The nodes of a piece of a page that stands inside an element of the name `context`.
std::vector<dom_node::pointer> read_fragment(std::wstring_view html, std::wstring_view context);

} // namespace quill
