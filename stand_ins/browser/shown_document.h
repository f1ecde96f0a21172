// Whether a document is on the screen, as the viewer inside the browser's window says.
#pragma once

#include "stand_ins/common/viewer_state.h"

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

namespace quill {

struct shown_document
{
    viewer_state state = viewer_state::empty; // empty also when there is no viewer in the window
    std::wstring text;                        // the viewer's own line: page and zoom, or why it failed
    HWND viewer = nullptr;
};

// Looks for the viewer among the window's descendants.
shown_document find_shown_document(HWND browser);

// A page can have several viewers: all of them, in the page's order from top to bottom.
std::vector<shown_document> find_shown_documents(HWND browser);

// What `count` documents are together: failed as soon as one is, shown when all of them are, else working
// (empty for none yet). The text has a part for every document.
shown_document summarise(const std::vector<shown_document>& documents, std::size_t count);

} // namespace quill
