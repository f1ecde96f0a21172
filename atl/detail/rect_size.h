// Overflow-safe width and height of rectangles that hosts pass.
#pragma once

#include <windows.h>

#include <cstdint>

namespace ATL::detail {

// to - from. Hosts may pass arbitrary rectangles; an overflow wraps, as it does in the system.
inline LONG extent(LONG from, LONG to) noexcept
{
    return static_cast<LONG>(static_cast<std::uint32_t>(to) - static_cast<std::uint32_t>(from));
}

inline SIZE size_of(const RECT& area) noexcept
{
    return {extent(area.left, area.right), extent(area.top, area.bottom)};
}

} // namespace ATL::detail
