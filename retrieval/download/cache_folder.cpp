#include "retrieval/download/cache_folder.h"

#include "platform/unique_handle.h"
#include "retrieval/download/folder_numbers.h"

#include <windows.h>

#include <shlwapi.h>

#include <array>

namespace quill {
namespace {

constexpr wchar_t extension[] = L".pdf";
constexpr std::size_t extension_length = 4;

// How many folders other tabs may create between the listing and the creation. Limits the loop on a file
// system that reports every name as existing.
constexpr int max_lost_races = 10'000;

// False if the listing is incomplete. It may still be possible to create folders.
bool read_numbers(const std::wstring& temp_path, folder_numbers& numbers)
{
    const std::wstring pattern = temp_path + std::wstring(cache_folder_prefix) + L"*";
    WIN32_FIND_DATAW entry{};
    const unique_find_handle search(FindFirstFileExW(
        pattern.c_str(), FindExInfoBasic, &entry, FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH));
    if (!search)
        return GetLastError() == ERROR_FILE_NOT_FOUND;
    do
        numbers.add(entry.cFileName);
    while (FindNextFileW(search.get(), &entry));
    return GetLastError() == ERROR_NO_MORE_FILES;
}

// Queries the path without its trailing backslash, with which the call fails for a file.
bool exists(const std::wstring& folder)
{
    return GetFileAttributesW(folder.substr(0, folder.size() - 1).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring full_path_or_empty(const std::wstring& path)
{
    const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    full.resize(size == 0 ? 0 : GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
    return full;
}

// The server controls the name: "..\" or a device name in it must not lead out of the folder.
bool lies_inside(const std::wstring& path, const std::wstring& folder)
{
    const std::wstring full_folder = full_path_or_empty(folder);
    return !full_folder.empty() && full_path_or_empty(path).compare(0, full_folder.size(), full_folder) == 0;
}

// Without what the shell considers the extension. name is shorter than MAX_PATH.
std::wstring base_name_of(const std::wstring& name)
{
    std::array<wchar_t, MAX_PATH> buffer{};
    name.copy(buffer.data(), buffer.size() - 1);
    PathRemoveExtensionW(buffer.data());
    return buffer.data();
}

} // namespace

std::wstring create_cache_folder(const std::wstring& temp_path)
{
    folder_numbers numbers;
    const bool is_complete = read_numbers(temp_path, numbers);
    int lost_races = 0;
    for (std::uint32_t number = numbers.next_free(); number != folder_numbers::end;
         number = numbers.next_free()) {
        const std::wstring folder =
            temp_path + std::wstring(cache_folder_prefix) + std::to_wstring(number) + L"\\";
        if (folder.size() >= MAX_PATH)
            break;
        if (!is_complete && exists(folder))
            continue;
        if (CreateDirectoryW(folder.c_str(), nullptr))
            return folder;
        // Created by another tab meanwhile, or the name is the short name of another entry.
        if (GetLastError() != ERROR_ALREADY_EXISTS || ++lost_races > max_lost_races)
            break;
    }
    return {};
}

std::wstring cache_file_path(const std::wstring& folder, const std::wstring& file_name)
{
    const std::wstring base_name = base_name_of(file_name);
    if (base_name.size() + folder.size() + extension_length >= MAX_PATH)
        return {};
    std::wstring path = folder + base_name + extension;
    if (lies_inside(path, folder))
        return path;
    return file_name == untitled_name ? std::wstring() : cache_file_path(folder, untitled_name);
}

} // namespace quill
