#include "retrieval/download/download_switch.h"

#include "platform/unique_handle.h"

#include <array>

namespace quill {
namespace {

constexpr wchar_t settings_key[] = L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Preferences"
                                   L"\\kBrowserPlugin";
constexpr wchar_t value_name[] = L"kIEBrowserPluginWinINet";
constexpr DWORD value_length = 16; // in UTF-16 code units

// A 32-bit installer may have written the machine's settings to the 32-bit view.
unique_registry_key open_settings() noexcept
{
    unique_registry_key key;
    LSTATUS status = RegOpenKeyExW(HKEY_CURRENT_USER, settings_key, 0, KEY_READ | KEY_WOW64_64KEY, key.put());
    if (status == ERROR_FILE_NOT_FOUND)
        status = RegOpenKeyExW(HKEY_LOCAL_MACHINE, settings_key, 0, KEY_READ | KEY_WOW64_64KEY, key.put());
    if (status == ERROR_FILE_NOT_FOUND)
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, settings_key, 0, KEY_READ | KEY_WOW64_32KEY, key.put());
    return key;
}

wininet_switch read_switch() noexcept
{
    const unique_registry_key key = open_settings();
    if (!key)
        return wininet_switch_no_key;
    // The type is ignored. The extra wchar_t terminates a value that fills the buffer.
    std::array<wchar_t, value_length + 1> text{};
    DWORD size_in_bytes = value_length * sizeof(wchar_t);
    const LSTATUS status = RegQueryValueExW(key.get(), value_name, nullptr, nullptr,
                                            reinterpret_cast<BYTE*>(text.data()), &size_in_bytes);
    return status == ERROR_SUCCESS ? parse_wininet_switch(text.data()) : wininet_switch_no_value;
}

} // namespace

wininet_switch ReadWinINetSwitch(DWORD& last_error) noexcept
{
    const wininet_switch result = read_switch();
    last_error = GetLastError();
    return result;
}

} // namespace quill
