// The percentage that the status pane shows.
#pragma once

#include <cstdint>

namespace quill {

// Percentage of a download, in whole steps of a hundredth of the maximum; 0 when the maximum is below
// 100 units, unknown ones included.
constexpr std::uint32_t download_percent(std::uint32_t progress, std::uint32_t progress_max)
{
    const std::uint32_t hundredth = progress_max / 100;
    return hundredth == 0 ? 0 : progress / hundredth;
}

} // namespace quill
