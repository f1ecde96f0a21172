// The administrator's switch between the two ways of downloading: the string value
// "kIEBrowserPluginWinINet" of the suite's settings.
#pragma once

#include "retrieval/download/switch_text.h"

#include <windows.h>

namespace quill {

// Reads the switch: the user's settings first, the machine's when the user has no such key. Always stores
// the thread's last error code, whatever it is about, in last_error.
wininet_switch ReadWinINetSwitch(DWORD& last_error) noexcept;

} // namespace quill
