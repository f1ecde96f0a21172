// Why the module is being detached: static destructors are not told.
#pragma once

namespace quill {

// Whether the process ends. Its other threads are gone then, wherever they were, other libraries may have
// ended already, and the system reclaims everything: nothing is to be freed any more. False when the module
// is unloaded.
bool process_is_ending() noexcept;

} // namespace quill
