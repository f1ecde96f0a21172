// What the helper object finds out about a page, and what it changes in it.
#pragma once

#include "sharepoint/decisions/page_kind.h"

struct IHTMLDocument3;

namespace quill {

// Pages without a root element or a head are regular, and so is no page at all.
page_kind classify_page(IHTMLDocument3* document);

// Takes SharePoint's own opening of PDFs in a client application out of the page's PDF links.
void remove_open_handlers(IHTMLDocument3* document);

} // namespace quill
