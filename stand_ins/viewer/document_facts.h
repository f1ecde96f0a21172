// What poppler's tools report about a document, read from their text. Plain text in, values out.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quill {

struct page_size
{
    double width;  // points, 72 to the inch, as the page is shown (rotation applied)
    double height; // points
};

// The pages of a document from pdfinfo's report (`pdfinfo -f 1 -l LAST`); empty when the report has none.
// A page whose size is missing or absurd counts as A4.
std::vector<page_size> parse_page_sizes(std::string_view report);

struct page_link
{
    // The place on the page, as fractions of its width and height from the top left corner.
    double left, top, right, bottom;
    std::wstring target; // the address as it stands in the document; empty for a page of this document
    std::size_t page;    // 0-based, for an empty target
};

// The links of one page from pdftohtml's report (`pdftohtml -xml`), which calls this document
// `own_name`.html.
std::vector<page_link> parse_page_links(std::string_view report, std::string_view own_name);

} // namespace quill
