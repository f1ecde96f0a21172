// Whether a process runs at low integrity, as browsers do in protected mode.
#pragma once

#include <windows.h>

namespace quill {

// True when the process's integrity level is low or below, and also when the level cannot be learned:
// what a low process may do, every process may.
bool is_low_integrity_process(HANDLE process);

// The decision alone, for a level as found in a token's label.
constexpr bool is_low_integrity_level(DWORD level)
{
    return level <= SECURITY_MANDATORY_LOW_RID;
}

} // namespace quill
