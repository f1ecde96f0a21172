// Keeps the document's last Release on its own thread. The download's worker passes the document to urlmon,
// whose Release may be the last one, on the worker thread; the document's window, and what the document holds
// of its host, belong to the thread that created it.
#pragma once

#include <windows.h>

#include <atomic>

namespace quill {

// Transfers a last reference to the window, whose thread releases it: at the message, or with the window if
// that goes first.
class last_reference
{
public:
    last_reference() noexcept : thread_(GetCurrentThreadId()) {}
    last_reference(const last_reference&) = delete;
    last_reference& operator=(const last_reference&) = delete;

    DWORD thread() const noexcept { return thread_; }
    bool is_own_thread() const noexcept { return GetCurrentThreadId() == thread_; }

    // The document's thread: its window can take a reference from now on.
    void window_opened(HWND window) noexcept;
    // The document's thread. True: the caller now owns the reference that was transferred.
    [[nodiscard]] bool window_closed(HWND window) noexcept;
    [[nodiscard]] bool take() noexcept;

    // Another thread, with the only reference. True: it is transferred, and the document may be gone. False:
    // there is no window that a message could be sent to.
    [[nodiscard]] bool transfer() noexcept;

private:
    enum class state
    {
        no_window,
        empty,
        transferred
    };

    const DWORD thread_;
    std::atomic<HWND> window_{nullptr};
    std::atomic<state> state_{state::no_window};
};

} // namespace quill
