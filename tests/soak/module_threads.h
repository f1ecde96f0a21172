// The module's own threads in this process, told from those that the system has set to work for it.
#pragma once

#include <windows.h>

namespace quill::soak {

// How many threads began in the module's code.
unsigned threads_of(HMODULE module);

} // namespace quill::soak
