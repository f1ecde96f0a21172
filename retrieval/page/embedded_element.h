// Finds the URL of the EMBED or OBJECT element that an active document stands for. The browser creates one
// document for each element whose type is PDF and does not pass it the element.
#pragma once

#include <windows.h>

#include <oleidl.h>

#include <cstdint>
#include <string>

struct IHTMLElement;

namespace quill {

struct embedded_request
{
    IOleClientSite* site;    // its container is the page; may be null
    std::uint32_t index;     // which PDF element of the page, from 0 in document order
    const void* log_address; // the active document's address, for log lines
    std::int32_t& page;      // set from the page's URL: counts from 1, 0 for none
    std::int32_t& zoom;      // set from the page's URL: per cent, 0 for none
};

// Returns 1 and the element's reference in url, escaped by EncodeUrl but not resolved. Returns 0 and an
// empty url if there is no such element or a call into the page fails. request.page and request.zoom are set
// as soon as the page is found. UI thread only. Throws std::bad_alloc only.
int ResolveEmbeddedElement(embedded_request& request, std::wstring& url);

// Searches the descendants of element. counter is the number of PDF elements that precede it and is
// advanced by those found. Result and exceptions as above.
int ProcessHTMLBodyElement(const embedded_request& request, IHTMLElement* element, std::wstring& url,
                           std::uint32_t& counter);

} // namespace quill
