// Keeps the document's last Release on its own thread. The worker passes the document to urlmon, which may
// release it last, on the worker thread; the document's window and its references to the host belong to the
// thread that created it.
#pragma once

#include <windows.h>

#include <atomic>

namespace quill {

// Transfers a last reference to the window, whose thread releases it at WM_USER_RELEASE or, if the window is
// destroyed first, at its final message. A member of the document.
class last_reference
{
public:
    last_reference() noexcept : thread_(GetCurrentThreadId()) {}
    last_reference(const last_reference&) = delete;
    last_reference& operator=(const last_reference&) = delete;

    // The document's own thread.
    DWORD thread() const noexcept { return thread_; }
    bool is_own_thread() const noexcept { return GetCurrentThreadId() == thread_; }

    // On the document's thread. References can be transferred to this window from now on.
    void window_opened(HWND window) noexcept;
    // On the document's thread. If they return true, the caller owns the transferred reference.
    [[nodiscard]] bool window_closed(HWND window) noexcept;
    [[nodiscard]] bool take() noexcept;

    // On another thread, for the only reference. Returns true if it was transferred; the document may have
    // been destroyed then. Returns false if there is no window.
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
