// A window that records the progress it is told of, as the active document's window receives it.
#pragma once

#include "retrieval/window_messages.h"

#include <windows.h>

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <vector>

namespace quill::test {

// Belongs to the thread that makes it. Messages from that thread arrive at once, others when it pumps.
class progress_window
{
public:
    progress_window();
    ~progress_window();
    progress_window(const progress_window&) = delete;
    progress_window& operator=(const progress_window&) = delete;

    HWND handle() const { return window_; }

    struct step
    {
        std::uint32_t progress;
        std::uint32_t progress_max;

        friend bool operator==(const step&, const step&) = default;
        friend std::ostream& operator<<(std::ostream& out, const step& shown);
    };
    std::vector<step> steps;
    std::function<void()> on_progress; // called after every step

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

    HWND window_;
};

} // namespace quill::test
