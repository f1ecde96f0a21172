#include "active_doc/thread_release.h"

#include "platform/mutex.h"

#include <mutex>

namespace quill {
namespace {

platform::MutexImpl pending_mutex;
thread_release* first_pending = nullptr;

} // namespace

bool thread_release::transfer(IUnknown* reference, DWORD thread) noexcept
{
    const std::lock_guard lock(pending_mutex);
    // For this thread only. Called when the thread retrieves a message.
    hook_ = SetWindowsHookExW(WH_GETMESSAGE, &get_message_hook, nullptr, thread);
    if (!hook_)
        return false;
    // Wakes the thread. If the queue is full, there are messages to retrieve already.
    if (!PostThreadMessageW(thread, WM_NULL, 0, 0) && GetLastError() == ERROR_INVALID_THREAD_ID) {
        UnhookWindowsHookEx(hook_);
        return false;
    }
    reference_ = reference;
    thread_ = thread;
    next_ = first_pending;
    first_pending = this;
    return true;
}

thread_release* thread_release::take_first_of_this_thread() noexcept
{
    const std::lock_guard lock(pending_mutex);
    for (thread_release** link = &first_pending; *link; link = &(*link)->next_) {
        thread_release* const found = *link;
        if (found->thread_ != GetCurrentThreadId())
            continue;
        *link = found->next_;
        return found;
    }
    return nullptr;
}

LRESULT CALLBACK thread_release::get_message_hook(int code, WPARAM wparam, LPARAM lparam) noexcept
{
    const LRESULT result = CallNextHookEx(nullptr, code, wparam, lparam);
    if (code != HC_ACTION)
        return result;
    while (thread_release* const pending = take_first_of_this_thread()) {
        UnhookWindowsHookEx(pending->hook_);
        pending->reference_->Release();
    }
    return result;
}

} // namespace quill
