// The messages that reach the system's STATIC control, whatever procedures precede its own.
#pragma once

#include <windows.h>

#include <vector>

namespace quill::test {

// The procedure of all STATIC windows that this process creates from now on: records what reaches the
// control.
class static_class_watch
{
public:
    static_class_watch()
    {
        messages_.clear();
        class_procedure_ = reinterpret_cast<WNDPROC>(
            SetClassLongPtrW(window_, GCLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
    }
    ~static_class_watch()
    {
        SetClassLongPtrW(window_, GCLP_WNDPROC, reinterpret_cast<LONG_PTR>(class_procedure_));
        DestroyWindow(window_);
    }
    static_class_watch(const static_class_watch&) = delete;
    static_class_watch& operator=(const static_class_watch&) = delete;

    static const std::vector<UINT>& messages() { return messages_; }

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
    {
        messages_.push_back(message);
        return CallWindowProcW(class_procedure_, window, message, wparam, lparam);
    }

    static inline WNDPROC class_procedure_ = nullptr;
    static inline std::vector<UINT> messages_;
    HWND window_ = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
};

} // namespace quill::test
