// Which addresses are PDFs of a SharePoint library that the desktop editor can open.
#pragma once

#include <string_view>

namespace quill {

// True for server-relative URLs and those that begin with "http", if they end with ".pdf"; except stored
// earlier versions of a file, the server's service endpoints and text with an embedded null. Writes a log
// line for every URL.
bool is_pdf_link(std::wstring_view url);

} // namespace quill
