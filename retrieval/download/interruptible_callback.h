// Ends a download whose server says nothing. The system asks whether to go on only when something arrives; a
// worker that waits for a byte would keep the closing document, and with it the browser's tab, waiting too.
#pragma once

#include "retrieval/download/bind_status_callback.h"

#include <windows.h>

#include <urlmon.h>

namespace quill {

// The download's callback with a window of the worker's own, without a place on the screen: the system looks
// at its thread's messages while it waits, and a message sent there can end the wait on the worker's own
// thread. Built, used and destroyed on that thread.
class interruptible_callback final : public CBindStatusCallbackImpl
{
public:
    interruptible_callback(HWND notify_window, HANDLE cancel_event) noexcept;
    ~interruptible_callback() override;

    STDMETHODIMP OnStartBinding(DWORD reserved, IBinding* binding) override;
    STDMETHODIMP OnProgress(ULONG progress, ULONG progress_max, ULONG status_code,
                            LPCWSTR status_text) override;
    STDMETHODIMP OnStopBinding(HRESULT result, LPCWSTR error) override;

    // Whether the download was told to end: E_ABORT is its result then, whatever the system makes of it.
    bool is_ended() const noexcept { return is_ended_; }

private:
    static LRESULT CALLBACK window_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    void keep(IBinding* binding) noexcept;
    void abort() noexcept;

    HWND window_ = nullptr;
    WNDPROC control_procedure_ = nullptr;
    IBinding* binding_ = nullptr;
    bool in_progress_ = false; // a report is under way, whose answer can end the download itself
    bool is_ended_ = false; // E_ABORT was answered or the binding aborted; stays, unlike the event's signal
};

// Asks the worker of that thread to end its download if it waits for its server. Never waits; may be called
// from any thread and any number of times.
void InterruptDownload(HANDLE worker_thread) noexcept;

} // namespace quill
