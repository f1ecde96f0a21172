// Classification of a page and removal of SharePoint's handlers from its links. Used by the aggregator and
// its document records.
#pragma once

#include "sharepoint/decisions/page_kind.h"

struct IHTMLDocument3;

namespace quill {

// Regular for nullptr and for pages without a root element or a head.
page_kind classify_page(IHTMLDocument3* document);

// Rewrites the PDF links without the handlers that open PDFs in a client application.
void remove_open_handlers(IHTMLDocument3* document);

} // namespace quill
