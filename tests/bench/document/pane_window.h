// A window that only shows the progress of a download in a status pane, as the document's window does.
#pragma once

#include "retrieval/pane/status_pane.h"

#include <windows.h>

#include <cstdint>

namespace quill::bench {

class pane_window
{
public:
    // resources: the library with the pane's text.
    pane_window(HWND parent, HMODULE resources);
    ~pane_window();
    pane_window(const pane_window&) = delete;
    pane_window& operator=(const pane_window&) = delete;

    HWND handle() const { return window_; }
    // Paints the pane, as a progress report does.
    void repaint(std::uint32_t percent);
    // The system's double-buffered painting of that size on the same window.
    void repaint_with_nothing() const;

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

    HWND window_;
    status_pane pane_;
};

} // namespace quill::bench
