#include "tests/retrieval/progress_window.h"

#include <gtest/gtest.h>

#include <ostream>

namespace quill::test {

std::ostream& operator<<(std::ostream& out, const progress_window::step& shown)
{
    return out << shown.progress << " of " << shown.progress_max;
}

progress_window::progress_window()
    : window_(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr))
{
    EXPECT_NE(window_, nullptr);
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&procedure));
}

progress_window::~progress_window()
{
    DestroyWindow(window_);
}

LRESULT CALLBACK progress_window::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
{
    if (message != WM_USER_PROGRESS)
        return DefWindowProcW(window, message, wparam, lparam);
    const auto self = reinterpret_cast<progress_window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    const auto record = reinterpret_cast<const progress_record*>(lparam);
    EXPECT_EQ(wparam, 0u);
    EXPECT_EQ(record->status_code, 5u);
    EXPECT_EQ(record->status_text, nullptr);
    self->steps.push_back({record->progress, record->progress_max});
    if (self->on_progress)
        self->on_progress();
    return 0;
}

} // namespace quill::test
