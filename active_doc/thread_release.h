// Releases a reference on the thread to which it belongs, for a thread without a window that could receive a
// message.
#pragma once

#include <windows.h>

#include <unknwn.h>

namespace quill {

// A member of the object that is to be released. One release at a time.
class thread_release
{
public:
    thread_release() noexcept = default;
    thread_release(const thread_release&) = delete;
    thread_release& operator=(const thread_release&) = delete;

    // On any thread. Returns true if `thread` will release the reference when it retrieves its next message;
    // the object may already have been destroyed then. Returns false if the thread has no message queue; the
    // caller keeps the reference.
    [[nodiscard]] bool transfer(IUnknown* reference, DWORD thread) noexcept;

private:
    static LRESULT CALLBACK get_message_hook(int code, WPARAM wparam, LPARAM lparam) noexcept;
    static thread_release* take_first_of_this_thread() noexcept;

    IUnknown* reference_ = nullptr;
    DWORD thread_ = 0;
    HHOOK hook_ = nullptr;
    thread_release* next_ = nullptr;
};

} // namespace quill
