#include "sharepoint/decisions/click_decision.h"

#include "sharepoint/decisions/case_insensitive.h"

namespace quill {

bool is_link_tag(std::wstring_view tag_name)
{
    return equal_ignoring_case(tag_name, L"a");
}

bool is_list_link_markup(std::wstring_view markup)
{
    return contains_ignoring_case(markup, L"\"ms-listlink ms-draggable\"") &&
           contains_ignoring_case(markup, L"onclick=\"return DispEx(this");
}

} // namespace quill
