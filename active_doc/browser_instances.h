// Numbers the active documents of one browser window, so that each document of a page knows which of the
// page's PDF elements it stands for.
#pragma once

#include <windows.h>

#include <cstdint>

namespace quill {

// The number of a new document in the browser window: 0 for the first, then 1, 2, ... for as long as the
// window's entry exists. A null window is a window like any other.
std::uint32_t add_browser_instance(HWND browser);

// Removes the browser window's entry, whatever its count: the next document counts from 0 again, also
// when others are still alive. A page's documents go together, so the first to go ends the count.
void remove_browser_instances(HWND browser);

} // namespace quill
