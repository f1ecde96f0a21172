// Prevents the module from loading into the Windows shell, which also creates browser helper objects and
// document objects.
#pragma once

#include <windows.h>

namespace quill {

// True if the module must not be loaded by the executable at `path`, which is lower-cased in place. False if
// the conversion fails.
bool refuses_host(wchar_t (&path)[MAX_PATH]);

// As above, for the current process. Called under the loader lock; does not allocate memory.
bool refuses_this_process();

} // namespace quill
