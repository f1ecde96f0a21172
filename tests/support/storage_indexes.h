// The free indexes for thread-local storage of the process.
#pragma once

#include <windows.h>

#include <iosfwd>

namespace quill::test {

struct storage_indexes
{
    DWORD tls = 0;
    DWORD fls = 0;

    // Allocates all of them and frees them again: no other thread may need one meanwhile.
    static storage_indexes free_now();

    friend bool operator==(const storage_indexes&, const storage_indexes&) = default;
    friend std::ostream& operator<<(std::ostream& out, const storage_indexes& indexes);
};

} // namespace quill::test
