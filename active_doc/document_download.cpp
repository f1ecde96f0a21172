#include "active_doc/document_download.h"

#include "retrieval/download/interruptible_callback.h"

namespace quill {
namespace {

constexpr DWORD poll_interval_ms = 100;

} // namespace

document_download::document_download() : stop_event_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}

void document_download::start(HWND window, IUnknown* caller)
{
    worker_has_url_ = worker_is_outdated_ = false;
    // An earlier stop() may have left the event set.
    ResetEvent(stop_event_.get());
    job_ = {window, stop_event_.get(), caller, &url_version_};
    thread_.reset(CreateThread(nullptr, 0, run_worker, &job_, 0, nullptr));
}

void document_download::stop()
{
    SetEvent(stop_event_.get());
    if (!thread_)
        return;
    if (GetThreadId(thread_.get()) == GetCurrentThreadId()) {
        thread_.reset();
        return;
    }
    // The wait is bounded: each send of the worker times out, and the download checks the event. Messages are
    // not pumped, because the host must not find a half-destroyed window.
    DWORD exit_code = STILL_ACTIVE;
    while (GetExitCodeThread(thread_.get(), &exit_code) && exit_code == STILL_ACTIVE) {
        if (WaitForSingleObject(thread_.get(), poll_interval_ms) != WAIT_TIMEOUT)
            continue;
        SetEvent(stop_event_.get());       // auto-reset: a wait may have consumed the signal
        interrupt_download(thread_.get()); // the server may be silent
    }
    thread_.reset();
}

void document_download::first_url_loaded()
{
    if (!worker_has_url_)
        url_version_.advance();
}

void document_download::url_replaced()
{
    if (worker_has_url_ && is_running()) {
        worker_is_outdated_ = true;
        SetEvent(stop_event_.get());
    }
    url_version_.advance();
}

bool document_download::is_running() const
{
    return thread_ && WaitForSingleObject(thread_.get(), 0) == WAIT_TIMEOUT;
}

DWORD WINAPI document_download::run_worker(void* job)
{
    // stop() waits for this thread, so the job outlives it unless the worker itself destroys the document.
    return DownloadPDFFile(*static_cast<const download_job*>(job));
}

} // namespace quill
