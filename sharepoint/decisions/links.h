// Links of SharePoint pages as text: which links the desktop editor opens, their absolute URLs, and the
// removal of SharePoint's own handlers from their markup. Used by the document record and the page analysis.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quill {

// True for server-relative URLs and those that begin with "http", if they end with ".pdf"; except stored
// earlier versions of a file, the server's service endpoints and text with an embedded null. Writes a log
// line for every URL.
bool is_pdf_link(std::wstring_view url);

bool is_link_tag(std::wstring_view tag_name);

// True for the markup of a document in one of SharePoint's lists: the list's exact class attribute, and the
// list's own script as the click handler.
bool is_list_link_markup(std::wstring_view markup);

// SharePoint writes links without the server: "/sites/a/x.pdf" gets the scheme and server of the page's URL,
// "//server/x.pdf" the scheme. Every other link is returned unchanged, and so is every link of a page whose
// scheme is not http or https: "/x.pdf" must not become a file path.
std::wstring absolute_link(std::wstring_view link, std::wstring_view page_url);

// The markup without the handlers by which SharePoint opens a PDF in a client application; std::nullopt if it
// has none. A handler is what the regular expression onclick="[^"]*PdfFile\.OpenDocuments[^"]*" matches,
// case-sensitively. The scan is linear and not recursive: a page may hold attributes of megabytes.
std::optional<std::wstring> without_open_handlers(std::wstring_view markup);

} // namespace quill
