// Removal of the handler by which SharePoint opens a PDF in a client application of its own.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quill {

// The markup without its handlers, nothing when it has none. A handler is what the regular expression
// onclick="[^"]*PdfFile\.OpenDocuments[^"]*" matches, case-sensitively. The scan is linear and needs no
// stack: a page may hold attributes of megabytes.
std::optional<std::wstring> without_open_handlers(std::wstring_view markup);

} // namespace quill
