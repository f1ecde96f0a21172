#include "active_doc/last_reference.h"

#include "retrieval/download/window_messages.h"

namespace quill {

void last_reference::window_opened(HWND window) noexcept
{
    window_ = window;
    // A reference that was transferred to the former window is released at this one's final message.
    state expected = state::no_window;
    state_.compare_exchange_strong(expected, state::empty);
}

bool last_reference::window_closed(HWND window) noexcept
{
    if (window != window_)
        return false; // another window has been opened
    return state_.exchange(state::no_window) == state::transferred;
}

bool last_reference::take() noexcept
{
    state expected = state::transferred;
    return state_.compare_exchange_strong(expected, state::empty);
}

bool last_reference::transfer() noexcept
{
    const HWND window = window_;
    state expected = state::empty;
    if (!state_.compare_exchange_strong(expected, state::transferred))
        return false;
    // The document may be destroyed from here on. If the queue is full, posting fails but sending works. If
    // both fail, the window's final message releases the reference.
    if (!PostMessageW(window, WM_USER_RELEASE, 0, 0))
        SendNotifyMessageW(window, WM_USER_RELEASE, 0, 0);
    return true;
}

} // namespace quill
