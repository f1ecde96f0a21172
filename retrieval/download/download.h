// The download worker: fetches a document into a cache folder of its own, checks it and hands its path
// to the active document's window.
#pragma once

#include <windows.h>

#include <unknwn.h>

namespace quill {

class url_version;

// What the worker needs of an active document. All of it belongs to the document and must outlive the
// download.
struct download_job
{
    HWND window;         // answers and receives the messages of window_messages.h; may vanish at any time
    HANDLE cancel_event; // signalled: stop; may be null
    IUnknown* caller;    // only passed on to the system's URL download; may be null
    url_version* version = nullptr; // of the URL that the window answers; null: it never changes
};

// The worker's whole work; runs on a thread of its own and always returns 0, its exit code. Reports by
// messages to the window and by log lines only. Never throws, never waits for the window longer than
// window_message_timeout_ms.
DWORD DownloadPDFFile(const download_job& job) noexcept;

} // namespace quill
