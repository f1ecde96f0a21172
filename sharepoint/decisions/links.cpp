#include "sharepoint/decisions/links.h"

#include "logging/log_stream.h"
#include "sharepoint/decisions/case_insensitive.h"

namespace quill {
namespace {

constexpr std::wstring_view attribute_start = L"onclick=\"";
constexpr std::wstring_view handler_call = L"PdfFile.OpenDocuments";
constexpr auto not_found = std::wstring_view::npos;

// Pages of files and archives have a scheme too, but no server to complete a link with.
bool is_web_scheme(std::wstring_view scheme)
{
    return equal_ignoring_case(scheme, L"http") || equal_ignoring_case(scheme, L"https");
}

struct text_range
{
    std::size_t begin;
    std::size_t end;
};

// After an attribute without the call the search continues at the next character, not after the value: the
// value may end in "onclick=", and its closing quotation mark then belongs to the next match.
std::optional<text_range> next_handler(std::wstring_view markup, std::size_t from)
{
    for (std::size_t begin = markup.find(attribute_start, from); begin != not_found;
         begin = markup.find(attribute_start, begin + 1)) {
        const std::size_t value = begin + attribute_start.size();
        const std::size_t quote = markup.find(L'"', value);
        if (quote == not_found)
            return std::nullopt;
        if (markup.substr(value, quote - value).find(handler_call) != not_found)
            return text_range{begin, quote + 1};
    }
    return std::nullopt;
}

} // namespace

bool is_pdf_link(std::wstring_view url)
{
    QUILL_LOG(log_level::debug) << "detect click to " << url;
    // First, because most links fail it and it does not scan the whole URL.
    if (!ends_with_ignoring_case(url, L".pdf"))
        return false;
    if (url.front() != L'/' && !begins_with_ignoring_case(url, L"http"))
        return false;
    // CUrl and the system's functions would read up to the null only, which is another URL.
    if (url.find(L'\0') != not_found)
        return false;
    return !contains_ignoring_case(url, L"/_vti_history/") && !contains_ignoring_case(url, L"/_vti_bin/");
}

bool is_link_tag(std::wstring_view tag_name)
{
    return equal_ignoring_case(tag_name, L"a");
}

bool is_list_link_markup(std::wstring_view markup)
{
    return contains_ignoring_case(markup, L"\"ms-listlink ms-draggable\"") &&
           contains_ignoring_case(markup, L"onclick=\"return DispEx(this");
}

std::wstring absolute_link(std::wstring_view link, std::wstring_view page_url)
{
    constexpr std::wstring_view before_server = L"://";
    const std::size_t colon = page_url.find(before_server);
    if (!link.starts_with(L'/') || colon == not_found || !is_web_scheme(page_url.substr(0, colon)))
        return std::wstring(link);

    const bool names_server = link.starts_with(L"//");
    const std::size_t server = colon + before_server.size();
    const std::size_t server_end = page_url.find_first_of(L"/?#", server);
    if (server_end == server || server == page_url.size())
        return std::wstring(link);
    std::wstring url(page_url.substr(0, names_server ? colon + 1 : server_end));
    url += link;
    return url;
}

std::optional<std::wstring> without_open_handlers(std::wstring_view markup)
{
    auto handler = next_handler(markup, 0);
    if (!handler)
        return std::nullopt;
    std::wstring rewritten;
    rewritten.reserve(markup.size());
    std::size_t kept = 0;
    for (; handler; handler = next_handler(markup, kept)) {
        rewritten += markup.substr(kept, handler->begin - kept);
        kept = handler->end;
    }
    rewritten += markup.substr(kept);
    return rewritten;
}

} // namespace quill
