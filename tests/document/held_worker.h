// Stops a download worker at one of its messages, so that a test can act at that moment.
#pragma once

#include "tests/document/document_fixture.h"
#include "tests/document/import_replaced.h"
#include "tests/support/wait.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>

namespace quill::test {

// Holds the first such message of a worker, before it is sent or after it was handled, until resume(). One
// instance at a time.
class held_worker
{
public:
    enum class side
    {
        before,
        after
    };

    held_worker(const document_fixture& fixture, UINT message, side where)
        : message_(message), where_(where),
          replaced_((instance_ = this, fixture.module.handle()), "SendMessageTimeoutW", &send)
    {
    }
    ~held_worker()
    {
        for (const HANDLE event : {is_there_, may_go_on_})
            CloseHandle(event);
    }
    held_worker(const held_worker&) = delete;
    held_worker& operator=(const held_worker&) = delete;

    void wait_until_held() const
    {
        ASSERT_TRUE(wait_until([&] { return WaitForSingleObject(is_there_, 0) == WAIT_OBJECT_0; }));
    }
    void resume() const { SetEvent(may_go_on_); }

private:
    static LRESULT WINAPI send(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT flags,
                               UINT timeout, PDWORD_PTR result)
    {
        const bool is_held = message == instance_->message_ && !instance_->was_held_.exchange(true);
        if (is_held && instance_->where_ == side::before)
            instance_->hold();
        const LRESULT sent = SendMessageTimeoutW(window, message, wparam, lparam, flags, timeout, result);
        if (is_held && instance_->where_ == side::after)
            instance_->hold();
        return sent;
    }

    void hold() const
    {
        SetEvent(is_there_);
        EXPECT_EQ(WaitForSingleObject(may_go_on_, default_deadline_ms), WAIT_OBJECT_0);
    }

    static inline held_worker* instance_ = nullptr;
    UINT message_;
    side where_;
    std::atomic<bool> was_held_{false};
    HANDLE is_there_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE may_go_on_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    import_replaced replaced_; // last: the worker may call at once
};

} // namespace quill::test
