// Parsers for the output of poppler's tools. Plain code.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quill {

struct page_size
{
    double width;  // points, 72 to the inch, with the page's rotation applied
    double height; // points
};

// The page sizes from the output of `pdfinfo -f 1 -l LAST`; empty if it contains none. A missing or invalid
// size is replaced by A4.
std::vector<page_size> parse_page_sizes(std::string_view report);

struct page_link
{
    // The position on the page, as fractions of its width and height from the top left corner.
    double left, top, right, bottom;
    std::wstring target; // the URL as written in the document; empty for a page of the same document
    std::size_t page;    // 0-based, for an empty target
};

// The links of one page from the output of `pdftohtml -xml`, which names this document `own_name`.html in
// links to its own pages.
std::vector<page_link> parse_page_links(std::string_view report, std::string_view own_name);

} // namespace quill
