// The suite's registry settings. This module reads the Settings key only.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>

namespace quill {

// The registry keys that the suite's programs share, relative to a root key.
enum class settings_key : std::size_t
{
    company,
    product,
    version,
    settings,
    cloud,
    toolbars,
    preferences,
    accelerators,
    quick_access,
    ribbon,
    tools,
    favorite_tools,
    count
};

// The path of each key. Mutable so that a program can redirect its settings, before other threads read them.
extern const wchar_t* settings_key_paths[static_cast<std::size_t>(settings_key::count)];

// Reads a string from the Settings key under HKEY_CURRENT_USER (per_user) or HKEY_LOCAL_MACHINE. value is
// cleared first; strings of 260 or more characters fail with ERROR_MORE_DATA. access also selects the
// registry view. type is the expected type, which is not checked. Returns a Win32 error code.
LSTATUS read_settings_string(const wchar_t* name, REGSAM access, DWORD type, std::wstring& value,
                             bool per_user);

// The full path of the suite's desktop editor from the machine's settings; empty if it is not set.
std::wstring read_exepath();

} // namespace quill
