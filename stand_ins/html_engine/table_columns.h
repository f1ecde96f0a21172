// How the columns of a table share its width. Plain.
#pragma once

#include <vector>

namespace quill {

// Widths of the columns in pixels, by what each would like to have. A stated width of the whole table (0:
// none) is filled; `available` is never exceeded. Columns that want nothing get nothing.
std::vector<int> share_width(const std::vector<int>& wanted, int available, int stated);

} // namespace quill
