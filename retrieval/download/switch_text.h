// The text of the administrator's switch between the two ways of downloading.
#pragma once

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

} // namespace quill
