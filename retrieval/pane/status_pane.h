// The progress pane in the middle of the active document's window: a bar and a line of text.
#pragma once

#include <windows.h>

#include <cstdint>

namespace quill {

// User-interface thread only. The pane's window belongs to its parent and dies with it; the object may
// outlive it. Not movable: the window points back to it.
class status_pane
{
public:
    status_pane() = default;
    status_pane(const status_pane&) = delete;
    status_pane& operator=(const status_pane&) = delete;
    ~status_pane();

    // Creates the pane, shown, in the middle of parent. resources: the module that holds the text's
    // format, string 101. Returns 1 in every case; without a window the other methods do nothing.
    int Create(HWND parent, HMODULE resources);
    // Shows a percentage; more than 100 counts as 100.
    void SetPercent(std::uint32_t percent);
    void Hide();
    // Places the pane again after its parent's size changed.
    void Recentre();
    // Gives the window its own procedure back. Called before the object goes away; harmless twice.
    void Detach();

    HWND window() const { return window_; }
    std::uint32_t percent() const { return percent_; }

private:
    static LRESULT CALLBACK PaneProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    void Paint();

    HMODULE resources_ = nullptr;
    HWND window_ = nullptr;
    HWND parent_ = nullptr;
    int shown_ = 0;
    std::uint32_t percent_ = 0;
    WNDPROC previous_procedure_ = nullptr;
};

} // namespace quill
