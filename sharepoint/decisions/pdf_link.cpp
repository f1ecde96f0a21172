#include "sharepoint/decisions/pdf_link.h"

#include "logging/log_stream.h"
#include "sharepoint/decisions/case_insensitive.h"

namespace quill {

bool is_pdf_link(std::wstring_view url)
{
    QUILL_LOG(log_level::debug) << "detect click to " << url;
    // Most links fail the first test, and it takes no look at the whole address.
    if (!ends_with_ignoring_case(url, L".pdf"))
        return false;
    if (url.front() != L'/' && !begins_with_ignoring_case(url, L"http"))
        return false;
    // The URL object and the system's calls would read the text up to the null only, and it ends otherwise.
    if (url.find(L'\0') != std::wstring_view::npos)
        return false;
    return !contains_ignoring_case(url, L"/_vti_history/") && !contains_ignoring_case(url, L"/_vti_bin/");
}

} // namespace quill
