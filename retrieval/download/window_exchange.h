// How the download worker communicates with the document: by messages to its window and by the stop event.
// Sends give up after window_message_timeout_ms, or at once if the window hangs or has been destroyed.
#pragma once

#include "retrieval/download/window_messages.h"

#include <string>

namespace quill {

// All functions are callable on any thread. window may be null or destroyed at any time. They return false
// if the window did not handle the message.

// Asks for the length first; the URL is truncated if it changes before the second message. Also returns false
// if the document has no URL.
bool request_url(HWND window, std::wstring& url);

// Copies the status text, since the window may read it after the call gave up.
bool send_progress(HWND window, const progress_record& progress) noexcept;

// Sends the path of the fetched file.
bool send_cache_file(HWND window, const std::wstring& path);

// Asks the window to open the file whose path it received.
void post_load_file(HWND window) noexcept;

// Whether the document has set the stop event; false for a null handle. The event is auto-reset: a check
// that returns true consumes the signal.
inline bool is_cancelled(HANDLE cancel_event) noexcept
{
    return cancel_event && WaitForSingleObject(cancel_event, 0) == WAIT_OBJECT_0;
}

} // namespace quill
