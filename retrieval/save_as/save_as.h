// Saving a copy through the browser, which may run in protected mode: only its broker process may write
// where the user wants the copy, so the copy is prepared in a folder of the browser's and moved by it.
#pragma once

#include <windows.h>

namespace quill {

// Asks the user for a place and saves a copy of the file there. window owns the dialog; local_path is the
// file that is shown and need not stay valid while the dialog runs.
// 1 when the copy was saved or the user cancelled, 0 when anything failed. Nothing is shown or left behind
// on failure. User-interface thread only; never throws.
int SaveDocumentAs(HWND window, const wchar_t* local_path) noexcept;

} // namespace quill
