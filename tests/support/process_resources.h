// Counts of the resources of the process, to prove that a scenario leaks nothing.
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

    // The current counts of this process. The first call creates windows and destroys them again, so that
    // what the window system keeps exists before anything is counted.
    static process_resources now();

    friend bool operator==(const process_resources&, const process_resources&) = default;
    friend std::ostream& operator<<(std::ostream& out, const process_resources& counts);
};

} // namespace quill::test
