// Distributes the width of a table among its columns. Plain code.
#pragma once

#include <vector>

namespace quill {

// The column widths in pixels for the preferred widths `wanted`. `stated` is the table's specified width,
// which is filled, or 0; `available` is never exceeded. A column with the preferred width 0 gets no width.
std::vector<int> share_width(const std::vector<int>& wanted, int available, int stated);

} // namespace quill
