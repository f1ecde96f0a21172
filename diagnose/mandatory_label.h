// Which mandatory labels admit writers of low integrity. Plain code; write_test.h reads the label.
#pragma once

#include <windows.h>

#include <span>

namespace quill::diagnose {

inline constexpr DWORD low_integrity_level = 0x1000;

// parts: the subauthorities of the label's SID, the last of which is the level.
constexpr bool is_low_label(std::span<const DWORD> parts)
{
    return !parts.empty() && parts.back() <= low_integrity_level;
}

} // namespace quill::diagnose
