// Cancels a download while its server is silent. urlmon calls OnProgress only when data arrives; without this
// class, a worker that waits for data would block the closing document, and with it the browser's tab.
#pragma once

#include "retrieval/download/bind_status_callback.h"

#include <windows.h>

#include <urlmon.h>

namespace quill {

// Adds a message-only window of the worker thread: urlmon dispatches messages while it waits, so a message to
// this window can abort the binding on the worker's own thread. Created, used and destroyed on that thread.
class interruptible_callback final : public CBindStatusCallbackImpl
{
public:
    interruptible_callback(HWND notify_window, HANDLE cancel_event) noexcept;
    ~interruptible_callback() override;

    STDMETHODIMP OnStartBinding(DWORD reserved, IBinding* binding) override;
    STDMETHODIMP OnProgress(ULONG progress, ULONG progress_max, ULONG status_code,
                            LPCWSTR status_text) override;
    STDMETHODIMP OnStopBinding(HRESULT result, LPCWSTR error) override;

    // Whether the download was cancelled. Its result is E_ABORT then, whatever urlmon returns.
    bool is_cancelled() const noexcept { return is_cancelled_; }

private:
    static LRESULT CALLBACK window_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    void set_binding(IBinding* binding) noexcept;
    void abort() noexcept;

    HWND window_ = nullptr;
    WNDPROC control_procedure_ = nullptr;
    IBinding* binding_ = nullptr;
    bool in_progress_ = false;  // inside OnProgress, whose result can cancel the download as well
    bool is_cancelled_ = false; // stays set, unlike the auto-reset event
};

// Cancels the download of that thread if it waits for its server. Does not block. Callable on any thread and
// repeatedly.
void interrupt_download(HANDLE worker_thread) noexcept;

// Pins urlmon and WinINet until the process ends. A cancelled download leaves threads of theirs running that
// wait for the server; in a host that does not use these libraries itself, unloading this module would unmap
// them under those threads. Callable on any thread and repeatedly.
void pin_download_libraries() noexcept;

} // namespace quill
