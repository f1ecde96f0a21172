#include "platform/settings.h"

#include "platform/unique_handle.h"

#include <algorithm>
#include <iterator>

namespace quill {

const wchar_t* settings_key_paths[] = {
    L"SOFTWARE\\Quill",
    L"SOFTWARE\\Quill\\DocStudio",
    L"SOFTWARE\\Quill\\DocStudio\\14",
    L"SOFTWARE\\Quill\\DocStudio\\14\\Settings",
    L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\QuillCloud",
    L"SOFTWARE\\Quill\\DocStudio\\14\\BCG",
    L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Preferences",
    L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Accelerators",
    L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\QAT",
    L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\UI\\Ribbon",
    L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Tools",
    L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\FavoriteTools\\Toolbar0",
};

LSTATUS read_settings_string(const wchar_t* name, REGSAM access, DWORD type, std::wstring& value,
                             bool per_user)
{
    value.clear();
    const wchar_t* const path = settings_key_paths[static_cast<std::size_t>(settings_key::settings)];
    unique_registry_key key;
    LSTATUS status =
        RegOpenKeyExW(per_user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE, path, 0, access, key.put());
    if (status != ERROR_SUCCESS)
        return status;

    wchar_t text[MAX_PATH] = {};
    DWORD size = sizeof text;
    status = RegQueryValueExW(key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(text), &size);
    // The value may have another type and need not be null-terminated.
    if (status == ERROR_SUCCESS)
        value.assign(text, std::find(text, std::end(text), L'\0'));
    return status;
}

std::wstring read_exepath()
{
    constexpr const wchar_t* name = L"exepath";
    std::wstring path;
    if (read_settings_string(name, KEY_READ | KEY_WOW64_64KEY, REG_SZ, path, false) != ERROR_SUCCESS)
        read_settings_string(name, KEY_READ | KEY_WOW64_32KEY, REG_SZ, path, false);
    return path;
}

} // namespace quill
