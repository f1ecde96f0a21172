#include "stand_ins/html_engine/table_columns.h"

#include <algorithm>
#include <numeric>

namespace quill {

std::vector<int> share_width(const std::vector<int>& wanted, int available, int stated)
{
    const long long sum = std::accumulate(wanted.begin(), wanted.end(), 0LL);
    const long long whole = std::min<long long>(available, stated > 0 ? stated : sum);
    std::vector<int> widths;
    for (const int width : wanted)
        widths.push_back(sum > 0 ? static_cast<int>(width * whole / sum) : 0);
    return widths;
}

} // namespace quill
