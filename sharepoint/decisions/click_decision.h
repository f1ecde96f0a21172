// Which clicked elements are links of a SharePoint document list.
#pragma once

#include <string_view>

namespace quill {

bool is_link_tag(std::wstring_view tag_name);

// True for the markup by which SharePoint's lists show a document: the list's classes, exactly, and the
// list's own script as the click's handler.
bool is_list_link_markup(std::wstring_view markup);

} // namespace quill
