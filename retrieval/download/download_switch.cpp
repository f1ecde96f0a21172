#include "retrieval/download/download_switch.h"

#include "platform/unique_handle.h"

#include <array>

namespace quill {

const wchar_t wininet_switch_key[] = L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Preferences"
                                     L"\\kBrowserPlugin";
const wchar_t wininet_switch_value[] = L"kIEBrowserPluginWinINet";

namespace {

constexpr DWORD value_length = 16; // in UTF-16 code units

struct settings_place
{
    HKEY root;
    REGSAM view;
    wininet_switch_source source;
};

// A 32-bit installer may have written the machine's settings to the 32-bit view.
unique_registry_key open_settings(wininet_switch_source& source) noexcept
{
    const settings_place places[] = {
        {HKEY_CURRENT_USER, KEY_WOW64_64KEY, wininet_switch_source::user},
        {HKEY_LOCAL_MACHINE, KEY_WOW64_64KEY, wininet_switch_source::machine},
        {HKEY_LOCAL_MACHINE, KEY_WOW64_32KEY, wininet_switch_source::machine_32_bit},
    };
    unique_registry_key key;
    for (const settings_place& place : places) {
        const LSTATUS status =
            RegOpenKeyExW(place.root, wininet_switch_key, 0, KEY_READ | place.view, key.put());
        if (status == ERROR_FILE_NOT_FOUND)
            continue;
        if (status == ERROR_SUCCESS)
            source = place.source;
        break;
    }
    return key;
}

} // namespace

wininet_switch read_wininet_switch(wininet_switch_source& source) noexcept
{
    source = wininet_switch_source::none;
    const unique_registry_key key = open_settings(source);
    if (!key)
        return wininet_switch_no_key;
    // The type is ignored. The extra wchar_t terminates a value that fills the buffer.
    std::array<wchar_t, value_length + 1> text{};
    DWORD size_in_bytes = value_length * sizeof(wchar_t);
    const LSTATUS status = RegQueryValueExW(key.get(), wininet_switch_value, nullptr, nullptr,
                                            reinterpret_cast<BYTE*>(text.data()), &size_in_bytes);
    return status == ERROR_SUCCESS ? parse_wininet_switch(text.data()) : wininet_switch_no_value;
}

wininet_switch ReadWinINetSwitch(DWORD& last_error) noexcept
{
    wininet_switch_source source{};
    const wininet_switch result = read_wininet_switch(source);
    last_error = GetLastError();
    return result;
}

} // namespace quill
