// The administrator's switch between the two download paths: the string value "kIEBrowserPluginWinINet" of
// the suite's settings. The worker reads it before each download.
#pragma once

#include <windows.h>

namespace quill {

// Use WinINet, or the default path and the reason, which is logged.
enum wininet_switch : int
{
    wininet_switch_on = 0,
    wininet_switch_no_key = 1,
    wininet_switch_no_value = 2,
    wininet_switch_no_number = 3, // the text has no "/b"
    wininet_switch_zero = 4
};

// Reads the user's settings; the machine's if the user has no such key. last_error receives the thread's last
// error code, whether or not reading failed.
wininet_switch ReadWinINetSwitch(DWORD& last_error) noexcept;

// The key that ReadWinINetSwitch reads: the first of these that exists. It is not looked for in the others
// when the value is missing there. Also none if the user's key exists but cannot be opened.
enum class wininet_switch_source
{
    none,
    user,
    machine, // the 64-bit view
    machine_32_bit
};

// The setting as ReadWinINetSwitch finds it. For programs that show where it comes from.
wininet_switch read_wininet_switch(wininet_switch_source& source) noexcept;

// Path of the key below its root, and name of the value.
extern const wchar_t wininet_switch_key[];
extern const wchar_t wininet_switch_value[];

// On for "/b" and a decimal number other than 0. text is null-terminated.
wininet_switch parse_wininet_switch(const wchar_t* text) noexcept;

} // namespace quill
