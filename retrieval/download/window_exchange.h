// The messages that a download sends to the active document's window. Every send gives up after
// window_message_timeout_ms, and at once when the window hangs or is gone.
#pragma once

#include "retrieval/download/window_messages.h"

#include <string>

namespace quill {

// All of these may be called on any thread, with a window that vanishes at any time or is null.

// The URL that the document is to be fetched from. False when the window does not answer or has none. The
// window is asked for the length first: what it returns is cut when the URL changes in between.
bool RequestUrl(HWND window, std::wstring& url);

// Reports progress; the status text is copied. False when the window did not take it.
bool SendProgress(HWND window, const progress_record& progress) noexcept;

// Hands the fetched file's path over. False when the window did not take it.
bool SendCacheFile(HWND window, const std::wstring& path);

// Asks the window to open the file that it was handed.
void PostLoadFile(HWND window) noexcept;

} // namespace quill
