#include "retrieval/download/download_switch.h"

#include "platform/unique_handle.h"

#include <array>

namespace quill {
namespace {

constexpr wchar_t settings_key[] = L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Preferences"
                                   L"\\kBrowserPlugin";
constexpr wchar_t value_name[] = L"kIEBrowserPluginWinINet";
constexpr DWORD value_units = 16;

// The machine's settings may have been written by a 32-bit installer, into the other view.
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
    // A value of any type is taken for text; the unit behind it ends one that fills the buffer.
    std::array<wchar_t, value_units + 1> text{};
    DWORD size_in_bytes = value_units * sizeof(wchar_t);
    const LSTATUS status = RegQueryValueExW(key.get(), value_name, nullptr, nullptr,
                                            reinterpret_cast<BYTE*>(text.data()), &size_in_bytes);
    return status == ERROR_SUCCESS ? ParseWinINetSwitch(text.data()) : wininet_switch_no_value;
}

} // namespace

wininet_switch ReadWinINetSwitch(DWORD& last_error) noexcept
{
    const wininet_switch answer = read_switch();
    last_error = GetLastError();
    return answer;
}

} // namespace quill
