// Releases a reference on the thread that it belongs to, when there is no window there that a message could
// be sent to.
#pragma once

#include <windows.h>

#include <unknwn.h>

namespace quill {

// A member of the object that is released; at most one release at a time.
class thread_release
{
public:
    thread_release() noexcept = default;
    thread_release(const thread_release&) = delete;
    thread_release& operator=(const thread_release&) = delete;

    // Any thread. True: the thread releases the reference when it looks for its next message, and the object
    // may be gone. False: the thread takes no messages, and the caller keeps the reference.
    [[nodiscard]] bool transfer(IUnknown* reference, DWORD thread) noexcept;

private:
    static LRESULT CALLBACK look_for_message(int code, WPARAM wparam, LPARAM lparam) noexcept;
    static thread_release* take_first_of_this_thread() noexcept;

    IUnknown* reference_ = nullptr;
    DWORD thread_ = 0;
    HHOOK hook_ = nullptr;
    thread_release* next_ = nullptr;
};

} // namespace quill
