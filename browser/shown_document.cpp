#include "browser/shown_document.h"

#include <array>

namespace quill {
namespace {

BOOL CALLBACK look_at_window(HWND window, LPARAM parameter)
{
    std::array<wchar_t, 64> class_name = {};
    GetClassNameW(window, class_name.data(), static_cast<int>(class_name.size()));
    if (std::wstring_view(class_name.data()) != viewer_window_class)
        return TRUE;
    auto& found = *reinterpret_cast<shown_document*>(parameter);
    found.state =
        static_cast<viewer_state>(reinterpret_cast<LONG_PTR>(GetPropW(window, viewer_state_property)));
    std::array<wchar_t, 256> text = {};
    GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
    found.text = text.data();
    return FALSE;
}

} // namespace

shown_document find_shown_document(HWND browser)
{
    shown_document found;
    EnumChildWindows(browser, look_at_window, reinterpret_cast<LPARAM>(&found));
    return found;
}

} // namespace quill
