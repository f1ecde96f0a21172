// Numbers the documents in a browser window, so that each document of a page knows which of the page's PDF
// elements it stands for.
#pragma once

#include <windows.h>

#include <cstdint>

namespace quill {

// Returns 0 for the first document in the browser window, then 1, 2, ... until the window is removed. A null
// window is counted like any other.
std::uint32_t add_browser_instance(HWND browser);

// Restarts the numbering of the browser window, even if documents remain in it: the documents of a page are
// closed together, so the first one to close ends the count.
void remove_browser_instances(HWND browser);

} // namespace quill
