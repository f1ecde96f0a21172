// Whether a process runs at low integrity, as the browser's tabs do in protected mode.
#pragma once

#include <windows.h>

namespace quill {

// True if the process's integrity level is low or below. Also true if the level cannot be determined, since
// any process may do what a low-integrity process may.
bool is_low_integrity_process(HANDLE process);

// The same test for the level from a token's mandatory label.
constexpr bool is_low_integrity_level(DWORD level)
{
    return level <= SECURITY_MANDATORY_LOW_RID;
}

} // namespace quill
