// Saves a screenshot of a window, including its children, as a PNG file.
#pragma once

#include <windows.h>

#include <string>

namespace quill {

// The window must be visible and not covered, since the picture is copied from the screen. False if the
// window is empty or the file cannot be written.
bool save_window_picture(HWND window, const std::wstring& path);

} // namespace quill
