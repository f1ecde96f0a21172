// The viewer's class, interface and methods.
#pragma once

#include <windows.h>

#include <oaidl.h>

namespace quill {

inline constexpr CLSID CLSID_viewer_control = {
    0xB7D25A34, 0x91CE, 0x4E08, {0xA6, 0xF3, 0x5C, 0x0E, 0x8D, 0x41, 0x9B, 0x72}};

// An alias of IDispatch.
inline constexpr IID IID_viewer_control = {
    0xE7C40B19, 0x2A6D, 0x4F85, {0xB3, 0xE2, 0x91, 0x0D, 0x5C, 0x7A, 0x4F, 0x38}};

enum class viewer_method : DISPID
{
    open = 1,             // path; returns VARIANT_TRUE if the file can be opened
    go_to_page = 4,       // 0-based index
    set_zoom = 9,         // factor, 1 is 100 %
    print = 12,           //
    finish_setup = 15,    // called once after the targets are set, followed by start
    start = 16,           //
    get_window = 19,      // returns the viewer's window handle as a number
    set_link_target = 23, // window, message
    set_save_target = 24, // window, message
};

} // namespace quill
