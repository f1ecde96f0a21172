#include "sharepoint/decisions/link_address.h"

#include "sharepoint/decisions/case_insensitive.h"

namespace quill {
namespace {

// The page of a file or of an archive has a scheme too, but no server that its links could refer to.
bool is_web_scheme(std::wstring_view scheme)
{
    return equal_ignoring_case(scheme, L"http") || equal_ignoring_case(scheme, L"https");
}

} // namespace

std::wstring link_address(std::wstring_view link, std::wstring_view page_address)
{
    constexpr std::wstring_view before_server = L"://";
    const std::size_t colon = page_address.find(before_server);
    if (!link.starts_with(L'/') || colon == std::wstring_view::npos ||
        !is_web_scheme(page_address.substr(0, colon)))
        return std::wstring(link);

    const bool names_server = link.starts_with(L"//");
    const std::size_t server = colon + before_server.size();
    const std::size_t server_end = page_address.find_first_of(L"/?#", server);
    if (server_end == server || server == page_address.size())
        return std::wstring(link);
    std::wstring address(page_address.substr(0, names_server ? colon + 1 : server_end));
    address += link;
    return address;
}

} // namespace quill
