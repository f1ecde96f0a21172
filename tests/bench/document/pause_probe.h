// How long messages wait in the queue of the calling thread: the pauses that a user notices.
#pragma once

#include <windows.h>

#include <thread>

namespace quill::bench {

// In its scope, posts itself a message every few milliseconds from a thread of its own. Create it on the
// observed thread, which must dispatch messages.
class pause_probe
{
public:
    pause_probe();
    ~pause_probe();
    pause_probe(const pause_probe&) = delete;
    pause_probe& operator=(const pause_probe&) = delete;

    // The longest time that a message waited so far, in nanoseconds, on the observed thread.
    double longest() const { return longest_; }

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    void post_until_stopped() const;

    HWND window_;
    HANDLE stop_;
    double longest_ = 0;
    std::thread poster_;
};

} // namespace quill::bench
