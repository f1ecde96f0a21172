// Saves a copy through the browser. In protected mode only its broker process may write to the user's
// folders, so the copy is prepared in a folder of the browser, which moves it to its destination.
#pragma once

#include <windows.h>

namespace quill {

// Shows the browser's Save As dialog and saves a copy of the file. window owns the dialog. local_path is
// copied first, because the document may be closed while the dialog is open. Returns 1 if the copy was saved
// or the user cancelled, 0 after a failure. Neither a message nor a temporary file results from a failure. UI
// thread only.
int SaveDocumentAs(HWND window, const wchar_t* local_path) noexcept;

} // namespace quill
