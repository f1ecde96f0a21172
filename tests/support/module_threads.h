// The module's own threads in this process, as opposed to those that the system created for it.
#pragma once

#include <windows.h>

namespace quill::test {

// The number of threads whose entry point is in the module.
unsigned threads_of(HMODULE module);

} // namespace quill::test
