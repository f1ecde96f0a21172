// Counts of what the process holds, to prove that a scenario gives everything back.
#pragma once

#include <windows.h>

#include <iosfwd>

namespace quill::test {

struct process_resources
{
    DWORD kernel_handles = 0;
    DWORD gdi_objects = 0;
    DWORD user_objects = 0;
    DWORD threads = 0;
    DWORD windows = 0; // windows of the calling thread, children included

    // The counts of the calling process at this moment.
    static process_resources now();

    friend bool operator==(const process_resources&, const process_resources&) = default;
    friend std::ostream& operator<<(std::ostream& out, const process_resources& counts);
};

} // namespace quill::test
