// The state of the viewers inside the browser's window.
#pragma once

#include "stand_ins/common/viewer_state.h"

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

namespace quill {

struct shown_document
{
    viewer_state state = viewer_state::empty; // also empty if the window has no viewer
    std::wstring text;                        // the viewer's status: page and zoom, or the error
    HWND viewer = nullptr;
};

// Finds the first viewer among the window's descendants.
shown_document find_shown_document(HWND browser);

// Finds all viewers, in their order on the page from top to bottom.
std::vector<shown_document> find_shown_documents(HWND browser);

// The combined state of `count` documents: failed if one has failed, shown if all are shown, empty if there
// is none yet, otherwise working. The text is composed of all documents' texts.
shown_document summarise(const std::vector<shown_document>& documents, std::size_t count);

} // namespace quill
