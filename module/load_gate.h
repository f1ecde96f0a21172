// Keeps the module out of the Windows shell: the shell creates browser helper objects and document objects
// too, and neither class is of use there.
#pragma once

#include <windows.h>

namespace quill {

// Takes the path of the host's program, which is lower-cased in place. True when the module is not to run in
// that host. A path that cannot be lower-cased refuses nothing.
bool refuses_host(wchar_t (&path)[MAX_PATH]);

// The same for this process. Called under the loader's lock; allocates nothing.
bool refuses_this_process();

} // namespace quill
