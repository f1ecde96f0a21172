#include "tests/bench/document/pause_probe.h"

#include "tests/bench/support/measure.h"

#include <algorithm>

namespace quill::bench {
namespace {

constexpr wchar_t class_name[] = L"quill pause probe";
constexpr UINT probe_message = WM_APP + 1;
constexpr DWORD interval_ms = 3;

} // namespace

pause_probe::pause_probe() : stop_(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    WNDCLASSW description{};
    description.lpfnWndProc = procedure;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = class_name;
    RegisterClassW(&description); // fails from the second probe on: the class is registered
    window_ = CreateWindowExW(0, class_name, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, description.hInstance,
                              nullptr);
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    poster_ = std::thread([this] { post_until_stopped(); });
}

pause_probe::~pause_probe()
{
    SetEvent(stop_);
    poster_.join();
    DestroyWindow(window_);
    CloseHandle(stop_);
}

void pause_probe::post_until_stopped() const
{
    while (WaitForSingleObject(stop_, interval_ms) == WAIT_TIMEOUT)
        PostMessageW(window_, probe_message, 0, static_cast<LPARAM>(now()));
}

LRESULT CALLBACK pause_probe::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
{
    auto* const self = reinterpret_cast<pause_probe*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message != probe_message || !self)
        return DefWindowProcW(window, message, wparam, lparam);
    self->longest_ = std::max(self->longest_, now() - static_cast<double>(lparam));
    return 0;
}

} // namespace quill::bench
