// Whether a document is on the screen, as the viewer inside the browser's window says.
#pragma once

#include "suite/viewer/viewer_state.h"

#include <windows.h>

#include <string>

namespace quill {

struct shown_document
{
    viewer_state state = viewer_state::empty; // empty also when there is no viewer in the window
    std::wstring text;                        // the viewer's own line: page and zoom, or why it failed
};

// Looks for the viewer among the window's descendants.
shown_document find_shown_document(HWND browser);

} // namespace quill
