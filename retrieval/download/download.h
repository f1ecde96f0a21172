// The download worker: fetches a document into a cache folder, checks that it is a PDF, and sends its path to
// the document's window.
#pragma once

#include <windows.h>

#include <unknwn.h>

namespace quill {

class url_version;

// All members are borrowed from the document and must outlive the download.
struct download_job
{
    HWND window;         // receives the messages of window_messages.h; may be destroyed at any time
    HANDLE cancel_event; // set to stop the download; may be null
    IUnknown* caller;    // passed to URLDownloadToFileW; may be null
    url_version* version = nullptr; // of the window's URL; null if the URL never changes
};

// The thread routine; always returns 0. The outcome is reported to the window and the log only. Does not
// throw, and waits for the window for at most window_message_timeout_ms at a time.
DWORD DownloadPDFFile(const download_job& job) noexcept;

} // namespace quill
