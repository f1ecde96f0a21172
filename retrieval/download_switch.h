// The administrator's switch between the two ways of downloading: the string value
// "kIEBrowserPluginWinINet" of the suite's settings.
#pragma once

#include <windows.h>

namespace quill {

// What ReadWinINetSwitch answers: use WinINet, or the default way and why.
enum wininet_switch : int
{
    wininet_switch_on = 0,
    wininet_switch_no_key = 1,
    wininet_switch_no_value = 2,
    wininet_switch_no_number = 3, // the text holds no "/b"
    wininet_switch_zero = 4
};

// Judges the value's text: on for "/b" and a decimal number other than 0. text must be terminated.
wininet_switch ParseWinINetSwitch(const wchar_t* text) noexcept;

// Reads the switch: the user's settings first, the machine's when the user has no such key. Always stores
// the thread's last error code, whatever it is about, in last_error.
wininet_switch ReadWinINetSwitch(DWORD& last_error) noexcept;

} // namespace quill
