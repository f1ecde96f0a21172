// key_time.exe HKLM|HKCU PATH: prints when a registry key was last written.
#include "platform/unique_handle.h"

#include <windows.h>

#include <cstdio>
#include <string_view>

int wmain(int count, wchar_t** values)
{
    quill::unique_registry_key key;
    FILETIME time{};
    if (count != 3 ||
        RegOpenKeyExW(std::wstring_view(values[1]) == L"HKCU" ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE,
                      values[2], 0, KEY_READ | KEY_WOW64_64KEY, key.put()) != ERROR_SUCCESS ||
        RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr, &time) != ERROR_SUCCESS)
        return 1;
    std::printf("%08lx%08lx\n", time.dwHighDateTime, time.dwLowDateTime);
    return 0;
}
