// The suite's settings in the registry, of which this module reads the Settings key only.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>

namespace quill {

// The keys that the suite's programs share, relative to a root key.
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

// The path of each key. Writable, so that a program can send its settings elsewhere; write before other
// threads read.
extern const wchar_t* settings_key_paths[static_cast<std::size_t>(settings_key::count)];

// Reads a text value of the Settings key under HKEY_CURRENT_USER (per_user) or HKEY_LOCAL_MACHINE. value is
// cleared first; texts of 260 characters and more fail with ERROR_MORE_DATA. access chooses the registry
// view too. type is what the caller expects; what the registry holds is not compared with it. Returns the
// registry's status, 0 on success.
LSTATUS read_settings_string(const wchar_t* name, REGSAM access, DWORD type, std::wstring& value,
                             bool per_user);

// Full path of the suite's desktop editor as the machine's settings give it; empty when they do not.
std::wstring read_exepath();

} // namespace quill
