// The download of an active document: starts the worker thread, stops it when the window is destroyed, and
// tracks whether the worker still fetches the current URL. A member of CActiveDocCtrl.
#pragma once

#include "platform/unique_handle.h"
#include "retrieval/download/download.h"
#include "retrieval/download/url_version.h"

#include <windows.h>

#include <unknwn.h>

namespace quill {

// UI thread only. The worker reads the job, the stop event and the URL's version.
class document_download
{
public:
    document_download();
    ~document_download() { stop(); }
    document_download(const document_download&) = delete;
    document_download& operator=(const document_download&) = delete;

    // Starts a worker, which asks the window for its URL. window and caller are borrowed until stop()
    // returns. Failure to create the thread is ignored: the window stays empty.
    void start(HWND window, IUnknown* caller);

    // Stops the worker and waits for its end without pumping messages. On the worker thread itself it does
    // not wait. Without a worker only the stop event is set, which start() resets.
    void stop();

    // The window has sent its URL to the worker.
    void url_sent() noexcept { worker_has_url_ = true; }
    // A URL was loaded where there was none before. A worker that has a URL keeps it.
    void first_url_loaded();
    // Another URL was loaded. A worker that has the former one becomes outdated and is asked to stop.
    void url_replaced();

    bool is_running() const;
    // Whether a worker still runs that fetches a replaced URL. The file that it sends must be ignored.
    bool is_outdated() const { return worker_is_outdated_ && is_running(); }

private:
    static DWORD WINAPI run_worker(void* job);

    download_job job_{};
    unique_handle stop_event_; // auto-reset
    unique_handle thread_;
    url_version url_version_;
    bool worker_has_url_ = false;
    bool worker_is_outdated_ = false;
};

} // namespace quill
