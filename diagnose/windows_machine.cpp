#include "diagnose/windows_machine.h"

#include "diagnose/download_folders.h"
#include "diagnose/path_place.h"
#include "diagnose/write_test.h"
#include "platform/environment.h"
#include "platform/unique_handle.h"

#include <windows.h>

#include <softpub.h>
#include <wintrust.h>

#include <algorithm>

namespace quill::diagnose {
namespace {

constexpr DWORD largest_value = 16 * 1024 * 1024;            // bytes
constexpr std::uint64_t largest_file = 512ull * 1024 * 1024; // bytes

HKEY handle_of(registry_root root)
{
    return root == registry_root::machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

REGSAM access_of(registry_view view)
{
    return view == registry_view::bits_64 ? KEY_WOW64_64KEY : KEY_WOW64_32KEY;
}

DWORD open_key(const registry_key& key, REGSAM access, unique_registry_key& opened)
{
    return static_cast<DWORD>(
        RegOpenKeyExW(handle_of(key.root), key.path.c_str(), 0, access | access_of(key.view), opened.put()));
}

// ERROR_SUCCESS for a path that may be opened.
DWORD path_error(std::wstring_view path)
{
    const path_place place = place_of(path);
    if (place == path_place::device)
        return error_path_of_device;
    const std::size_t colon = path.find(L':');
    const std::wstring drive = colon == std::wstring_view::npos || colon == 0
                                   ? L""
                                   : std::wstring(path.substr(colon - 1, 2)) + L"\\";
    if (place == path_place::share || (!drive.empty() && GetDriveTypeW(drive.c_str()) == DRIVE_REMOTE))
        return error_path_on_share;
    return ERROR_SUCCESS;
}

} // namespace

// Another program may replace the value by a longer one between the two calls.
registry_value windows_machine::value(const registry_key& key, const std::wstring& name) const
{
    registry_value result;
    unique_registry_key opened;
    result.error = open_key(key, KEY_QUERY_VALUE, opened);
    if (result.error != ERROR_SUCCESS)
        return result;
    DWORD size = 0;
    do {
        result.data.resize(size);
        result.error = static_cast<DWORD>(
            RegQueryValueExW(opened.get(), name.c_str(), nullptr, &result.type, result.data.data(), &size));
        // Without a buffer the call succeeds and only returns the size.
        if (result.error == ERROR_SUCCESS && size > result.data.size())
            result.error = ERROR_MORE_DATA;
    } while (result.error == ERROR_MORE_DATA && size > result.data.size() && size <= largest_value);
    result.data.resize(result.error == ERROR_SUCCESS ? size : 0);
    return result;
}

DWORD windows_machine::open(const registry_key& key) const
{
    unique_registry_key opened;
    return open_key(key, KEY_READ, opened);
}

subkey_list windows_machine::subkeys(const registry_key& key) const
{
    subkey_list result;
    unique_registry_key opened;
    result.error = open_key(key, KEY_READ, opened);
    while (result.error == ERROR_SUCCESS) {
        wchar_t name[256];
        DWORD length = ARRAYSIZE(name);
        result.error = static_cast<DWORD>(RegEnumKeyExW(opened.get(), static_cast<DWORD>(result.names.size()),
                                                        name, &length, nullptr, nullptr, nullptr, nullptr));
        if (result.error == ERROR_SUCCESS)
            result.names.emplace_back(name, length);
    }
    if (result.error == ERROR_NO_MORE_ITEMS)
        result.error = ERROR_SUCCESS;
    return result;
}

file_contents windows_machine::read(const std::wstring& path) const
{
    file_contents result;
    result.error = path_error(path);
    if (result.error != ERROR_SUCCESS)
        return result;
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        result.error = GetLastError();
        return result;
    }
    result.is_folder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (result.is_folder)
        return result;
    const unique_handle file(CreateFileW(path.c_str(), GENERIC_READ,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                         OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    LARGE_INTEGER size{};
    if (!file || !GetFileSizeEx(file.get(), &size)) {
        result.error = GetLastError();
        return result;
    }
    if (GetFileType(file.get()) != FILE_TYPE_DISK) {
        result.error = ERROR_BAD_FILE_TYPE;
        return result;
    }
    if (static_cast<std::uint64_t>(size.QuadPart) > largest_file) {
        result.error = ERROR_FILE_TOO_LARGE;
        return result;
    }
    result.bytes.resize(static_cast<std::size_t>(size.QuadPart));
    std::size_t position = 0;
    while (position < result.bytes.size()) {
        DWORD count = 0;
        const auto wanted =
            static_cast<DWORD>(std::min<std::size_t>(result.bytes.size() - position, 1 << 20));
        if (!ReadFile(file.get(), result.bytes.data() + position, wanted, &count, nullptr)) {
            result.error = GetLastError();
            return result;
        }
        if (count == 0)
            break;
        position += count;
    }
    result.bytes.resize(position);
    return result;
}

DWORD windows_machine::exists(const std::wstring& path) const
{
    if (const DWORD error = path_error(path); error != ERROR_SUCCESS)
        return error;
    return GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES ? GetLastError() : ERROR_SUCCESS;
}

bool windows_machine::is_folder(const std::wstring& path) const
{
    if (path_error(path) != ERROR_SUCCESS)
        return false;
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Without a look at revocation lists, which may need the network.
signature_facts windows_machine::signature(const std::wstring& path) const
{
    WINTRUST_FILE_INFO file{};
    file.cbStruct = sizeof file;
    file.pcwszFilePath = path.c_str();
    WINTRUST_DATA data{};
    data.cbStruct = sizeof data;
    data.dwUIChoice = WTD_UI_NONE;
    data.fdwRevocationChecks = WTD_REVOKE_NONE;
    data.dwUnionChoice = WTD_CHOICE_FILE;
    data.pFile = &file;
    data.dwStateAction = WTD_STATEACTION_VERIFY;
    data.dwProvFlags = WTD_CACHE_ONLY_URL_RETRIEVAL;
    GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
    const HWND no_window = static_cast<HWND>(INVALID_HANDLE_VALUE);
    const auto status = static_cast<HRESULT>(WinVerifyTrust(no_window, &action, &data));
    data.dwStateAction = WTD_STATEACTION_CLOSE;
    WinVerifyTrust(no_window, &action, &data);

    signature_facts result;
    result.status = static_cast<std::uint32_t>(status);
    switch (status) {
    case S_OK:
        result.kind = signature_kind::valid;
        break;
    case TRUST_E_NOSIGNATURE:
        result.kind = signature_kind::none;
        break;
    case TRUST_E_PROVIDER_UNKNOWN:
    case TRUST_E_ACTION_UNKNOWN:
    case TRUST_E_SUBJECT_FORM_UNKNOWN:
    case CRYPT_E_FILE_ERROR:
    case E_NOTIMPL:
        result.kind = signature_kind::unknown;
        break;
    default:
        result.kind = signature_kind::broken;
        break;
    }
    return result;
}

std::wstring windows_machine::expanded(const std::wstring& text) const
{
    // Longer texts are no paths, and many variables in one may expand to gigabytes.
    constexpr std::size_t longest = 32'767;
    const DWORD size = text.size() > longest ? 0 : ExpandEnvironmentStringsW(text.c_str(), nullptr, 0);
    if (size == 0 || size > longest)
        return text;
    std::wstring result(size, L'\0');
    const DWORD length = ExpandEnvironmentStringsW(text.c_str(), result.data(), size);
    if (length == 0 || length > size)
        return text;
    result.resize(length - 1);
    return result;
}

std::optional<std::wstring> windows_machine::environment(const std::wstring& name) const
{
    return environment_variable(name.c_str());
}

write_facts windows_machine::write(const std::wstring& folder, bool at_low_integrity) const
{
    return test_writing(folder, at_low_integrity);
}

download_count windows_machine::downloads(const std::wstring& folder) const
{
    return count_downloads(folder);
}

} // namespace quill::diagnose
