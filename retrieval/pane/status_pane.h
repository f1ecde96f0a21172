// The progress pane in the middle of the document's window: a bar and a line of text.
#pragma once

#include <windows.h>

#include <cstdint>

namespace quill {

// UI thread only. The parent destroys the pane's window; either the window or this object may be destroyed
// first. Not movable: the window has a pointer to it.
class status_pane
{
public:
    status_pane() = default;
    status_pane(const status_pane&) = delete;
    status_pane& operator=(const status_pane&) = delete;
    ~status_pane();

    // Creates the pane's window, visible, centred in parent. resources: the module that contains the text's
    // format, string 101. Always returns 1; without a window the other methods have no effect.
    int Create(HWND parent, HMODULE resources);
    // Values above 100 are clamped.
    void SetPercent(std::uint32_t percent);
    void Hide();
    // Call after the parent's size has changed.
    void recentre();
    // Restores the window's own procedure and forgets the window. Has no effect the second time.
    void Detach();

    HWND window() const { return window_; }
    std::uint32_t percent() const { return percent_; }

private:
    static LRESULT CALLBACK window_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    void paint();

    HMODULE resources_ = nullptr;
    HWND window_ = nullptr;
    HWND parent_ = nullptr;
    int shown_ = 0;
    std::uint32_t percent_ = 0;
    WNDPROC previous_procedure_ = nullptr;
};

} // namespace quill
