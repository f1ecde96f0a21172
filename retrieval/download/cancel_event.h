// The one object that an active document and its download both touch directly.
#pragma once

#include <windows.h>

namespace quill {

// Whether the document wants its download to stop; false without an event. Never waits.
inline bool IsCancelled(HANDLE cancel_event) noexcept
{
    return cancel_event && WaitForSingleObject(cancel_event, 0) == WAIT_OBJECT_0;
}

} // namespace quill
