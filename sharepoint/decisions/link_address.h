// Where a link's text leads to from the page that it stands in.
#pragma once

#include <string>
#include <string_view>

namespace quill {

// SharePoint writes its links without the server ("/sites/a/x.pdf"): such a link gets the scheme and server
// of the page's URL, "//server/x.pdf" the scheme. Any other link stays as it is, and so does every link of a
// page that is not of http or https: "/x.pdf" must not become a file.
std::wstring link_address(std::wstring_view link, std::wstring_view page_address);

} // namespace quill
