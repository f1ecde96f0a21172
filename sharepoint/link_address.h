// Where a link's text leads to from the page that it stands in.
#pragma once

#include <string>
#include <string_view>

namespace quill {

// SharePoint writes its links without the server ("/sites/a/x.pdf"): such a link gets the scheme and server
// of the page's address, "//server/x.pdf" the scheme. Any other link, and every link of a page whose address
// has no server, stays as it is.
std::wstring link_address(std::wstring_view link, std::wstring_view page_address);

} // namespace quill
