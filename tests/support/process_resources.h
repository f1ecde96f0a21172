// Counts of what the process holds, to prove that a scenario gives everything back.
#pragma once

#include <windows.h>

#include <iosfwd>

namespace quill::test {

struct process_resources
{
    DWORD kernel_handles = 0;
    DWORD gdi_objects = 0;
    DWORD menus = 0;
    DWORD threads = 0;
    DWORD windows = 0; // windows of the calling thread, children included, without its input-method window

    // The counts of the calling process at this moment. The first call makes windows and destroys them again,
    // so that what the window system keeps for good is there before anything is counted.
    static process_resources now();

    friend bool operator==(const process_resources&, const process_resources&) = default;
    friend std::ostream& operator<<(std::ostream& out, const process_resources& counts);
};

} // namespace quill::test
