// How long the calling thread's message queue lets a message wait: what its user feels as a pause.
#pragma once

#include <windows.h>

#include <thread>

namespace quill::bench {

// Posts itself a message every few milliseconds from a thread of its own, for as long as it lives. Build it
// on the thread that is watched, which must pump messages.
class pause_probe
{
public:
    pause_probe();
    ~pause_probe();
    pause_probe(const pause_probe&) = delete;
    pause_probe& operator=(const pause_probe&) = delete;

    // The longest wait of a message so far, in nanoseconds, as seen by the watched thread.
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
