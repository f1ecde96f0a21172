// Which addresses are PDFs of a SharePoint library that the desktop editor can open.
#pragma once

#include <string_view>

namespace quill {

// True for server-relative and http(s) addresses that end with ".pdf", except stored earlier versions of
// a file and the server's service endpoints. Writes a log line for every address asked about.
bool is_pdf_link(std::wstring_view url);

} // namespace quill
