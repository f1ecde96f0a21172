// Saves what a window shows, its children included, as a PNG file.
#pragma once

#include <windows.h>

#include <string>

namespace quill {

// The window must be on the screen and uncovered: the picture is taken from there. False when there is
// nothing to take or the file cannot be written.
bool save_window_picture(HWND window, const std::wstring& path);

} // namespace quill
