// Finds the address of the PDF element of a page that one active document stands for. The browser creates
// one active document for each EMBED or OBJECT of a PDF and does not say which one it is for.
#pragma once

#include <windows.h>

#include <oleidl.h>

#include <cstdint>
#include <string>

struct IHTMLElement;

namespace quill {

struct embedded_request
{
    IOleClientSite* site;    // way to the hosting page; may be null
    std::uint32_t index;     // which PDF element of the page, from 0 in document order
    const void* log_address; // the active document's address, as its log lines show it
    std::int32_t& page;      // set from the page's own address: 1-based, 0 for none
    std::int32_t& zoom;      // the same: percent, 0 for none
};

// 1 when the page has the element; url then holds its reference as the page gives it, escaped by
// EncodeUrl. 0 when it has not, or when the page fails to answer; url is then empty. page and zoom are
// written as soon as the page could be reached. User-interface thread only. Throws std::bad_alloc only.
int ResolveEmbeddedElement(embedded_request& request, std::wstring& url);

// The search below one element. counter holds the number of PDF elements met before it and is moved on.
// Returns as above.
int ProcessHTMLBodyElement(const embedded_request& request, IHTMLElement* element, std::wstring& url,
                           std::uint32_t& counter);

} // namespace quill
